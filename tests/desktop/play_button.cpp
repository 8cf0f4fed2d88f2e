#include "tests/desktop/play_button.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include <QRect>

namespace vistrane {

namespace {

enum class Tone { light, dark, other };

Tone toneOf(QRgb colour) {
    const auto [lowest, highest] = std::minmax({qRed(colour), qGreen(colour), qBlue(colour)});
    if (lowest > 200) {
        return Tone::light;
    }
    return highest < 90 ? Tone::dark : Tone::other;
}

/// The pixels that differ clearly from the button's own colour.
QRect placeOfDisc(const QImage& button) {
    constexpr int clearly = 60;
    QRect place;
    for (int y = 0; y < button.height(); ++y) {
        for (int x = 0; x < button.width(); ++x) {
            if (std::abs(qRed(button.pixel(x, y)) - qRed(button.pixel(0, 0))) >= clearly) {
                place |= QRect(x, y, 1, 1);
            }
        }
    }
    return place;
}

} // namespace

std::optional<PlayFace> faceOf(const QImage& button) {
    const QRect disc = placeOfDisc(button);
    if (disc.width() < 12 || std::abs(disc.width() - disc.height()) > 2) {
        return std::nullopt;
    }
    // The disc's left part never has a mark and its middle always does. To the upper right of the
    // middle only the square of "stop" has one.
    const QPoint centre = disc.topLeft() + QPoint(disc.width() / 2, disc.height() / 2);
    const int aside = disc.width() * 9 / 50;
    const Tone plain = toneOf(button.pixel(disc.x() + aside, centre.y()));
    const Tone mark = toneOf(button.pixel(centre));
    const Tone corner = toneOf(button.pixel(centre + QPoint(aside, -aside)));
    if (plain == Tone::other || mark == Tone::other || plain == mark || corner == Tone::other) {
        return std::nullopt;
    }
    return PlayFace{plain == Tone::light, corner == mark};
}

std::optional<std::pair<int, int>> frameNumbers(const std::string& readOut) {
    std::pair<int, int> numbers;
    int length = 0;
    // "%n" is not counted, and reached only when all else has matched.
    if (std::sscanf(readOut.c_str(), "Displaying frame %d of %d%n", &numbers.first, &numbers.second,
                    &length) != 2 ||
        static_cast<std::size_t>(length) != readOut.size()) {
        return std::nullopt;
    }
    return numbers;
}

} // namespace vistrane
