#pragma once

#include <memory>

#include "backends/console/ConsoleButton.h"
#include "backends/console/ConsoleNib.h"
#include "backends/console/ConsolePopUpButton.h"
#include "backends/console/ConsoleProgressIndicator.h"
#include "backends/console/ConsoleSlider.h"
#include "backends/console/ConsoleTextField.h"
#include "backends/console/ConsoleView.h"
#include "backends/console/ConsoleWindow.h"

namespace vistrane {

/// The main window's controls, as an interface file would create them. The front end operates them
/// instead of a user.
struct ConsoleInterface {
    /// New controls with their initial titles, ranges and values.
    ConsoleInterface();

    /// Registers every control as an outlet and, if it has an action, as its sender.
    void addTo(ConsoleNib& nib) const;

    std::shared_ptr<ConsoleWindow> myWindow;
    std::shared_ptr<ConsoleTextField> hInput, mInput, sInput;
    std::shared_ptr<ConsoleTextField> fpsD, timeD, currentS;
    std::shared_ptr<ConsoleSlider> fpsS, photoSlider;
    std::shared_ptr<ConsoleButton> startB, oneB, slowB, compilingB, outfolderB, previewPlayButton;
    std::shared_ptr<ConsoleImageView> leadingImage, myDisplay;
    std::shared_ptr<ConsolePopUpButton> AVDevicePopUp;
    std::shared_ptr<ConsoleView> previewView;
    std::shared_ptr<ConsoleProgressIndicator> progressBar;
};

} // namespace vistrane
