#pragma once

#include <string>

namespace vistrane {

class AppKit;
class NSButton;

/// The names of the play button's two pictures.
struct ButtonFaces {
    std::string image;
    std::string alternateImage;
    bool operator==(const ButtonFaces&) const = default;
};

/// The light appearance swaps the two pictures of the dark one. The "-s" pictures are for playing.
ButtonFaces buttonFaces(bool dark, bool playing);

void setButtonFaces(AppKit& appKit, NSButton& button, bool dark, bool playing);

} // namespace vistrane
