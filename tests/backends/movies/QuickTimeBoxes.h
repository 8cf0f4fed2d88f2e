#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vistrane {

struct TimeRun {
    std::uint32_t count = 0;
    std::int32_t value = 0;
    bool operator==(const TimeRun&) const = default;
};

struct Edit {
    std::int32_t duration = 0;
    std::int32_t mediaTime = 0;
    bool operator==(const Edit&) const = default;
};

/// What the boxes of a one-track movie say. Read by hand, so that no reader's kindness hides a
/// contradiction.
struct QuickTimeBoxes {
    std::uint32_t movieTimescale = 0;
    std::uint32_t movieDuration = 0;
    std::uint32_t trackDuration = 0;
    double trackWidth = 0;
    double trackHeight = 0;
    std::vector<Edit> edits;
    std::uint32_t mediaTimescale = 0;
    std::uint32_t mediaDuration = 0;
    std::string codec;
    std::uint16_t sampleWidth = 0;
    std::uint16_t sampleHeight = 0;
    std::vector<TimeRun> sampleDurations;
    std::vector<TimeRun> compositionOffsets;
    std::vector<std::uint32_t> sampleSizes;

    std::int64_t sumOfSampleDurations() const;
};

/// Nothing when the file is no movie whose boxes fill it to the last byte.
std::optional<QuickTimeBoxes> readBoxes(const std::string& path);

} // namespace vistrane
