#pragma once

#include <optional>
#include <string>
#include <utility>

#include <QImage>

namespace vistrane {

/// What the play button shows: a light or a dark disc with the mark of what a click does.
struct PlayFace {
    bool isLight = false;
    bool isStopMark = false;

    bool operator==(const PlayFace&) const = default;
};

/// The faces by the desktop's appearance and the player's state.
inline constexpr PlayFace darkStopped{true, false};
inline constexpr PlayFace darkPlaying{true, true};
inline constexpr PlayFace lightStopped{false, false};
inline constexpr PlayFace lightPlaying{false, true};

/// Nothing for a picture that is none of the faces.
std::optional<PlayFace> faceOf(const QImage& button);

/// The numbers in "Displaying frame 3 of 20"; nothing for another text.
std::optional<std::pair<int, int>> frameNumbers(const std::string& readOut);

} // namespace vistrane
