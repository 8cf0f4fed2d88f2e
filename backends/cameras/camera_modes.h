#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

#include "backends/cameras/gst_pointers.h"
#include "platform/avfoundation/AVMediaFormat.h"

namespace vistrane {

/// One way in which a camera can deliver.
struct CameraMode {
    /// In the order of preference among otherwise equal modes.
    enum class Kind { raw, jpeg, encoded, muxed };
    Kind kind = Kind::raw;
    /// 0 when the camera does not tell.
    int width = 0;
    int height = 0;
    /// Pictures per second; 0 when the camera does not tell.
    double rate = 0.0;
    /// What to ask the camera for: this mode and no other.
    GstPointer<GstCaps> caps;

    /// Between two pictures; 0 when the camera does not tell. At most a minute.
    std::chrono::milliseconds period() const {
        const double seconds = rate > 0.0 ? std::min(1.0 / rate, 60.0) : 0.0;
        return std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000.0));
    }

    bool givesPictures() const { return kind == Kind::raw || kind == Kind::jpeg; }
};

/// What a camera's capabilities offer. Capabilities that say nothing at all count as raw pictures
/// of any size; forms that nothing here can decode are left out.
std::vector<CameraMode> modesOf(const GstCaps* caps);

/// The largest raw or JPEG size; among equal sizes the better rate, then raw. Null without one.
const CameraMode* photoMode(const std::vector<CameraMode>& modes);

/// The largest mode at 24 pictures a second or more; failing that the one that is nearest to it.
/// Null without any mode.
const CameraMode* movingPictureMode(const std::vector<CameraMode>& modes);

/// Video: a mode that is a picture or an encoded stream. Muxed: one that mixes in sound.
bool offersMediaType(const std::vector<CameraMode>& modes, AVMediaType type);

/// Whether a query for that medium finds a camera with these modes. One for video finds cameras
/// that mix in sound as well.
bool isFoundBy(AVMediaType query, const std::vector<CameraMode>& modes);

} // namespace vistrane
