#include "backends/console/ConsoleInterface.h"

#include "backends/console/ConsoleImageView.h"
#include "backends/console/ConsoleWindow.h"

namespace vistrane {

ConsoleInterface::ConsoleInterface() {
    // What the program needs and nobody operates.
    add<ConsoleWindow>("myWindow");
    add<ConsoleTextField>("fpsD");
    add<ConsoleTextField>("currentS");
    add<ConsoleSlider>("photoSlider", 0.0, 0.0, 0.0);
    addWithAction<ConsoleButton>("addFrameClick:", "oneB", "Single Frame");
    add<ConsoleButton>("slowB", "Lower Quality");
    add<ConsoleButton>("outfolderB", "click to select the output folder");
    add<ConsoleButton>("previewPlayButton", "");
    add<ConsoleImageView>("previewView");
    add<ConsoleImageView>("myDisplay");
}

} // namespace vistrane
