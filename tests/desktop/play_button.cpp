#include "tests/desktop/play_button.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>

namespace vistrane {

namespace {

enum class Tone { light, dark, other };

Tone toneOf(const Colour& colour) {
    const auto [lowest, highest] = std::minmax_element(colour.begin(), colour.end());
    if (*lowest > 200) {
        return Tone::light;
    }
    return *highest < 90 ? Tone::dark : Tone::other;
}

/// What stands out from the button's own colour.
Rectangle placeOfDisc(const Picture& button) {
    Rectangle place;
    for (int y = 0; y < button.height; ++y) {
        for (int x = 0; x < button.width; ++x) {
            constexpr int clearly = 60;
            const Colour colour = button.at(x, y);
            const Colour ground = button.at(0, 0);
            if (std::abs(colour[0] - ground[0]) < clearly) {
                continue;
            }
            if (place.isEmpty()) {
                place = {x, y, 1, 1};
            }
            const int right = std::max(place.right(), x + 1);
            const int bottom = std::max(place.bottom(), y + 1);
            place.x = std::min(place.x, x);
            place.y = std::min(place.y, y);
            place.width = right - place.x;
            place.height = bottom - place.y;
        }
    }
    return place;
}

} // namespace

std::optional<PlayFace> faceOf(const Picture& button) {
    const Rectangle disc = placeOfDisc(button);
    if (disc.width < 12 || std::abs(disc.width - disc.height) > 2) {
        return std::nullopt;
    }
    // In parts of the disc's width: its left edge has never a mark, its middle always, and up and
    // to the right of the middle only the square of "stop" has one.
    const int centreX = disc.x + disc.width / 2;
    const int centreY = disc.y + disc.height / 2;
    const int aside = disc.width * 9 / 50;
    const Tone plain = toneOf(button.at(disc.x + aside, centreY));
    const Tone mark = toneOf(button.at(centreX, centreY));
    const Tone corner = toneOf(button.at(centreX + aside, centreY - aside));
    if (plain == Tone::other || mark == Tone::other || plain == mark || corner == Tone::other) {
        return std::nullopt;
    }
    return PlayFace{plain == Tone::light, corner == mark};
}

std::optional<std::pair<int, int>> frameNumbers(const std::string& readOut) {
    std::istringstream words(readOut);
    std::string displaying;
    std::string frame;
    std::string of;
    std::pair<int, int> numbers;
    if (!(words >> displaying >> frame >> numbers.first >> of >> numbers.second) ||
        displaying + " " + frame != "Displaying frame" || of != "of" || !words.eof()) {
        return std::nullopt;
    }
    return numbers;
}

int FrameWatch::look() {
    const auto numbers = frameNumbers(readOut_.name());
    if (!numbers) {
        return 0;
    }
    if (seen_.empty() || seen_.back() != numbers->first) {
        seen_.push_back(numbers->first);
    }
    return numbers->first;
}

} // namespace vistrane
