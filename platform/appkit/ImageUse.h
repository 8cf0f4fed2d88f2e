#pragma once

namespace vistrane {

/// What a picture is loaded for.
enum class ImageUse {
    /// A view shows it, usually smaller than it is.
    View,
    /// It is drawn in its full size into a frame of a movie.
    Movie,
};

} // namespace vistrane
