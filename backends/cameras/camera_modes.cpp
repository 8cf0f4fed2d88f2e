#include "backends/cameras/camera_modes.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <tuple>
#include <utility>

namespace vistrane {

namespace {

using Kind = CameraMode::Kind;

/// A range beyond this means that the source can produce any size.
constexpr int largestSide = 16384;
constexpr double smoothRate = 24.0;
constexpr std::pair<int, int> usualRate{30, 1};

double valueOf(std::pair<int, int> rate) {
    return rate.second > 0 ? static_cast<double>(rate.first) / rate.second : 0.0;
}

bool isKnownFormat(const GValue* format) {
    if (G_VALUE_HOLDS_STRING(format)) {
        return gst_video_format_from_string(g_value_get_string(format)) != GST_VIDEO_FORMAT_UNKNOWN;
    }
    for (guint i = 0; GST_VALUE_HOLDS_LIST(format) && i < gst_value_list_get_size(format); ++i) {
        if (isKnownFormat(gst_value_list_get_value(format, i))) {
            return true;
        }
    }
    return false;
}

std::optional<Kind> kindOf(const GstStructure* structure) {
    if (gst_structure_has_name(structure, "video/x-raw")) {
        const GValue* format = gst_structure_get_value(structure, "format");
        return format == nullptr || isKnownFormat(format) ? std::optional(Kind::raw) : std::nullopt;
    }
    if (gst_structure_has_name(structure, "image/jpeg")) {
        return Kind::jpeg;
    }
    for (const char* muxed : {"video/mpegts", "video/x-dv", "video/mpeg"}) {
        gboolean systemStream = std::strcmp(muxed, "video/mpegts") == 0;
        gst_structure_get_boolean(structure, "systemstream", &systemStream);
        if (gst_structure_has_name(structure, muxed) && systemStream) {
            return Kind::muxed;
        }
    }
    for (const char* encoded : {"video/x-h264", "video/x-h265", "video/x-vp8", "video/x-vp9",
                                "video/mpeg", "video/x-dv", "video/x-h263", "image/png"}) {
        if (gst_structure_has_name(structure, encoded)) {
            return Kind::encoded;
        }
    }
    return std::nullopt;
}

/// The largest of the offered lengths; `usual` if any length is offered.
int largestLength(const GValue* value, int usual) {
    if (value == nullptr) {
        return 0;
    }
    if (G_VALUE_HOLDS_INT(value)) {
        return g_value_get_int(value);
    }
    if (GST_VALUE_HOLDS_INT_RANGE(value)) {
        const int least = gst_value_get_int_range_min(value);
        const int most = gst_value_get_int_range_max(value);
        return most > largestSide ? std::max(least, usual) : most;
    }
    int largest = 0;
    for (guint i = 0; GST_VALUE_HOLDS_LIST(value) && i < gst_value_list_get_size(value); ++i) {
        largest = std::max(largest, largestLength(gst_value_list_get_value(value, i), usual));
    }
    return largest;
}

std::pair<int, int> fractionOf(const GValue* value) {
    return {gst_value_get_fraction_numerator(value), gst_value_get_fraction_denominator(value)};
}

/// The highest of the offered rates. Of a range, the usual rate if it lies inside, because more
/// pictures only cost power.
std::pair<int, int> bestRate(const GValue* value) {
    if (value == nullptr) {
        return {0, 1};
    }
    if (GST_VALUE_HOLDS_FRACTION(value)) {
        return fractionOf(value);
    }
    if (GST_VALUE_HOLDS_FRACTION_RANGE(value)) {
        const auto least = fractionOf(gst_value_get_fraction_range_min(value));
        const auto most = fractionOf(gst_value_get_fraction_range_max(value));
        if (valueOf(least) > valueOf(usualRate)) {
            return least;
        }
        return valueOf(most) < valueOf(usualRate) ? most : usualRate;
    }
    std::pair<int, int> best{0, 1};
    for (guint i = 0; GST_VALUE_HOLDS_LIST(value) && i < gst_value_list_get_size(value); ++i) {
        const auto rate = bestRate(gst_value_list_get_value(value, i));
        best = valueOf(rate) > valueOf(best) ? rate : best;
    }
    return best;
}

CameraMode modeOf(const GstStructure* structure, Kind kind) {
    CameraMode mode;
    mode.kind = kind;
    mode.width = largestLength(gst_structure_get_value(structure, "width"), 1920);
    mode.height = largestLength(gst_structure_get_value(structure, "height"), 1080);
    const auto rate = bestRate(gst_structure_get_value(structure, "framerate"));
    mode.rate = valueOf(rate);

    GstStructure* wanted = gst_structure_copy(structure);
    if (mode.width > 0 && mode.height > 0) {
        gst_structure_set(wanted, "width", G_TYPE_INT, mode.width, "height", G_TYPE_INT,
                          mode.height, nullptr);
    }
    if (mode.rate > 0.0) {
        gst_structure_set(wanted, "framerate", GST_TYPE_FRACTION, rate.first, rate.second, nullptr);
    }
    mode.caps.reset(gst_caps_new_full(wanted, nullptr));
    return mode;
}

/// Skips pictures in memory that only a graphics processor can read.
bool isInPlainMemory(const GstCaps* caps, guint index) {
    const GstCapsFeatures* features = gst_caps_get_features(caps, index);
    return features == nullptr ||
           gst_caps_features_is_equal(features, GST_CAPS_FEATURES_MEMORY_SYSTEM_MEMORY);
}

auto area(const CameraMode& mode) {
    return static_cast<long long>(mode.width) * mode.height;
}

int preference(const CameraMode& mode) {
    return -static_cast<int>(mode.kind);
}

} // namespace

std::vector<CameraMode> modesOf(const GstCaps* caps) {
    std::vector<CameraMode> modes;
    if (caps == nullptr || gst_caps_is_any(caps) || gst_caps_is_empty(caps)) {
        modes.emplace_back();
        modes.back().caps.reset(gst_caps_new_empty_simple("video/x-raw"));
        return modes;
    }
    for (guint i = 0; i < gst_caps_get_size(caps); ++i) {
        const GstStructure* structure = gst_caps_get_structure(caps, i);
        const auto kind = kindOf(structure);
        if (kind && isInPlainMemory(caps, i)) {
            modes.push_back(modeOf(structure, *kind));
        }
    }
    return modes;
}

const CameraMode* photoMode(const std::vector<CameraMode>& modes) {
    const auto rank = [](const CameraMode& mode) {
        return std::tuple(mode.givesPictures(), area(mode), mode.rate, preference(mode));
    };
    const auto best =
        std::max_element(modes.begin(), modes.end(), [&](const CameraMode& a, const CameraMode& b) {
            return rank(a) < rank(b);
        });
    return best != modes.end() && best->givesPictures() ? &*best : nullptr;
}

const CameraMode* movingPictureMode(const std::vector<CameraMode>& modes) {
    const auto rank = [](const CameraMode& mode) {
        // An unknown rate counts as fast enough.
        const double rate = mode.rate > 0.0 ? std::min(mode.rate, smoothRate) : smoothRate;
        return std::tuple(rate, area(mode), mode.rate, preference(mode));
    };
    const auto best =
        std::max_element(modes.begin(), modes.end(), [&](const CameraMode& a, const CameraMode& b) {
            return rank(a) < rank(b);
        });
    return best != modes.end() ? &*best : nullptr;
}

const CameraMode* modeFor(AVCaptureSessionPreset preset, const std::vector<CameraMode>& modes) {
    const CameraMode* mode = preset == AVCaptureSessionPresetPhoto ? photoMode(modes) : nullptr;
    return mode != nullptr ? mode : movingPictureMode(modes);
}

bool offersMediaType(const std::vector<CameraMode>& modes, AVMediaType type) {
    return std::any_of(modes.begin(), modes.end(), [type](const CameraMode& mode) {
        const bool muxed = mode.kind == Kind::muxed;
        return type == AVMediaTypeMuxed ? muxed : type == AVMediaTypeVideo && !muxed;
    });
}

bool isFoundBy(AVMediaType query, const std::vector<CameraMode>& modes) {
    return offersMediaType(modes, query) ||
           (query == AVMediaTypeVideo && offersMediaType(modes, AVMediaTypeMuxed));
}

} // namespace vistrane
