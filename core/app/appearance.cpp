#include "core/app/appearance.h"

#include "core/app/AppDelegate.h"
#include "core/preview/button_faces.h"
#include "platform/foundation/Foundation.h"

namespace vistrane {

std::optional<std::string>& interfaceStyle() {
    static std::optional<std::string> style = "Dark";
    return style;
}

bool isDark() {
    return interfaceStyle() == "Dark";
}

void AppDelegate::darkModeChanged(NSObject*) {
    interfaceStyle() =
        platform_.foundation.standardUserDefaults().stringForKey("AppleInterfaceStyle");
    const bool isPlaying = playTimer && playTimer->isValid();
    setButtonFaces(platform_.appKit, *previewPlayButton, isDark(), isPlaying);
}

} // namespace vistrane
