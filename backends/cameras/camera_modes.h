#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

#include "backends/cameras/gst_pointers.h"
#include "platform/avfoundation/AVMediaFormat.h"

namespace vistrane {

/// One format, size and rate that a camera can deliver.
struct CameraMode {
    /// In the order of preference among otherwise equal modes.
    enum class Kind { raw, jpeg, encoded, muxed };
    Kind kind = Kind::raw;
    /// In pixels; 0 when unknown.
    int width = 0;
    int height = 0;
    /// Pictures per second; 0 when unknown.
    double rate = 0.0;
    /// The capabilities that select exactly this mode.
    GstPointer<GstCaps> caps;

    /// The time between two pictures, at most a minute; 0 when unknown.
    std::chrono::milliseconds period() const {
        const double seconds = rate > 0.0 ? std::min(1.0 / rate, 60.0) : 0.0;
        return std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000.0));
    }

    bool givesPictures() const { return kind == Kind::raw || kind == Kind::jpeg; }
};

/// The modes in a camera's capabilities. Empty capabilities count as raw pictures of any size.
/// Formats that cannot be decoded here are left out.
std::vector<CameraMode> modesOf(const GstCaps* caps);

/// The largest raw or JPEG size; among equal sizes the higher rate, then raw. Null without one.
const CameraMode* photoMode(const std::vector<CameraMode>& modes);

/// The largest mode of at least 24 pictures a second; without one, the mode of the nearest rate.
/// Null without any mode.
const CameraMode* movingPictureMode(const std::vector<CameraMode>& modes);

/// Video: a mode of pictures or of an encoded stream. Muxed: a mode that contains sound.
bool offersMediaType(const std::vector<CameraMode>& modes, AVMediaType type);

/// Whether a query for that media type finds a camera with these modes. A query for video finds
/// muxed cameras too.
bool isFoundBy(AVMediaType query, const std::vector<CameraMode>& modes);

} // namespace vistrane
