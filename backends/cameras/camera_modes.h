#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

#include "backends/cameras/gst_pointers.h"
#include "platform/avfoundation/AVCaptureDevice.h"
#include "platform/avfoundation/AVMediaFormat.h"

namespace vistrane {

/// One format, size and rate that a camera can deliver.
struct CameraMode {
    /// In order of preference among otherwise equal modes.
    enum class Kind { raw, jpeg, encoded, muxed };
    Kind kind = Kind::raw;
    /// In pixels; 0 if unknown.
    int width = 0;
    int height = 0;
    /// Pictures per second; 0 if unknown.
    double rate = 0.0;
    /// The capabilities that select exactly this mode.
    GstPointer<GstCaps> caps;

    /// The time between two pictures, at most a minute; 0 if unknown.
    std::chrono::milliseconds period() const {
        const double seconds = rate > 0.0 ? std::min(1.0 / rate, 60.0) : 0.0;
        return std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000.0));
    }

    bool givesPictures() const { return kind == Kind::raw || kind == Kind::jpeg; }
};

/// The modes in a camera's capabilities. Empty capabilities count as raw pictures of any size.
/// Formats that cannot be decoded here are left out.
std::vector<CameraMode> modesOf(const GstCaps* caps);

/// The largest raw or JPEG mode; among equal sizes the higher rate, then raw. Null if there is
/// none.
const CameraMode* photoMode(const std::vector<CameraMode>& modes);

/// The largest mode of at least 24 pictures per second; if there is none, the mode with the nearest
/// rate. Null if there is no mode.
const CameraMode* movingPictureMode(const std::vector<CameraMode>& modes);

/// The mode for a preset: that of photos or, without one, that of moving pictures. Null if there is
/// no mode.
const CameraMode* modeFor(AVCaptureSessionPreset preset, const std::vector<CameraMode>& modes);

/// Video: a mode of pictures or of an encoded stream. Muxed: a mode that contains sound.
bool offersMediaType(const std::vector<CameraMode>& modes, AVMediaType type);

/// Whether a query for that media type finds a camera with these modes. A query for video also
/// finds muxed cameras.
bool isFoundBy(AVMediaType query, const std::vector<CameraMode>& modes);

} // namespace vistrane
