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

/// The main window's controls, as an interface file would make them, for whoever acts as the user.
struct ConsoleInterface {
    /// Fresh controls with their first titles, ranges and values.
    ConsoleInterface();

    /// Makes the controls the outlets of their names, and the senders of their actions.
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
