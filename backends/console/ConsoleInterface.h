#pragma once

#include <functional>
#include <memory>
#include <string>

#include "backends/console/ConsoleButton.h"
#include "backends/console/ConsolePopUpButton.h"
#include "backends/console/ConsoleProgressIndicator.h"
#include "backends/console/ConsoleSlider.h"
#include "backends/console/ConsoleTextField.h"
#include "platform/NibTables.h"

namespace vistrane {

/// The main window's controls, as an interface file would create them: each an outlet and, if it
/// has an action, its sender. The front end operates the members instead of a user.
class ConsoleInterface final : public NibTables {
public:
    /// New controls with their initial titles, ranges and values.
    ConsoleInterface();

    /// Sliders have no cell here.
    void sliderCell(const std::string&, std::function<std::shared_ptr<NSSliderCell>()>) override {}

private:
    template <typename Control, typename... Arguments>
    std::shared_ptr<Control> add(const char* name, Arguments... arguments) {
        auto control = std::make_shared<Control>(arguments...);
        addOutlet(name, control);
        return control;
    }
    template <typename Control, typename... Arguments>
    std::shared_ptr<Control> addWithAction(const char* selector, const char* name,
                                           Arguments... arguments) {
        auto control = add<Control>(name, arguments...);
        addSender(selector, [control](const NSAction& action) { control->setAction(action); });
        return control;
    }

public:
    const std::shared_ptr<ConsoleTextField> hInput =
        addWithAction<ConsoleTextField>("timeIntervalchanged:", "hInput");
    const std::shared_ptr<ConsoleTextField> mInput =
        addWithAction<ConsoleTextField>("timeIntervalchanged:", "mInput");
    const std::shared_ptr<ConsoleTextField> sInput =
        addWithAction<ConsoleTextField>("timeIntervalchanged:", "sInput");
    const std::shared_ptr<ConsoleTextField> timeD = add<ConsoleTextField>("timeD");
    const std::shared_ptr<ConsoleSlider> fpsS =
        addWithAction<ConsoleSlider>("rateChanged:", "fpsS", 1.0, 60.0, 25.0);
    const std::shared_ptr<ConsoleButton> startB =
        addWithAction<ConsoleButton>("startRunning:", "startB", "Start Auto Capture");
    const std::shared_ptr<ConsoleButton> compilingB =
        addWithAction<ConsoleButton>("genneratingMovie:", "compilingB", "Compile Movie");
    const std::shared_ptr<ConsolePopUpButton> AVDevicePopUp =
        addWithAction<ConsolePopUpButton>("selectAVDevice:", "AVDevicePopUp");
    const std::shared_ptr<ConsoleProgressIndicator> progressBar =
        add<ConsoleProgressIndicator>("progressBar");
};

} // namespace vistrane
