#include "core/preview/button_faces.h"

#include "platform/appkit/AppKit.h"
#include "platform/appkit/NSButton.h"

namespace vistrane {

ButtonFaces buttonFaces(bool dark, bool playing) {
    if (dark) {
        return playing ? ButtonFaces{"play1-s", "play2-s"} : ButtonFaces{"play1", "play2"};
    }
    return playing ? ButtonFaces{"play2-s", "play1-s"} : ButtonFaces{"play2", "play1"};
}

void setButtonFaces(AppKit& appKit, NSButton& button, bool dark, bool playing) {
    const ButtonFaces faces = buttonFaces(dark, playing);
    button.setImage(appKit.imageNamed(faces.image));
    button.setAlternateImage(appKit.imageNamed(faces.alternateImage));
}

} // namespace vistrane
