#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vistrane {

/// One picture in the file.
struct MovieSample {
    std::uint64_t offset = 0; // in the file
    std::uint32_t size = 0;
    std::int64_t time = 0; // in ticks, when it is shown
    bool isKey = false;    // decoding can start here
};

/// All that a movie file says about its one track.
struct MovieTrack {
    /// The size to show, in pixels. The coded picture may be one larger in either direction.
    std::uint16_t width = 0;
    std::uint16_t height = 0;
    /// Ticks per second, of the track and of the movie.
    std::int32_t timescale = 0;
    /// When the last picture ends, in ticks.
    std::int64_t end = 0;
    /// The decoder configuration record (ISO/IEC 14496-15, 5.3.3.1).
    std::vector<std::uint8_t> configuration;
    /// At least one, in the order of decoding. No two have the same time.
    std::vector<MovieSample> samples;
};

/// The beginning of a movie file, up to the first sample's bytes. The media box's size is open:
/// `mediaBoxSize` goes to `mediaBoxSizeOffset` when all samples are written.
std::vector<std::uint8_t> movieFileHead();
inline constexpr std::size_t mediaBoxSizeOffset = 28;
std::array<std::uint8_t, 8> mediaBoxSize(std::uint64_t endOfSamples);

/// The movie box, which follows the last sample (QuickTime File Format, "Movie Atoms").
///
/// Sample durations run in the order of showing, and signed composition offsets lead from there
/// to the order of decoding. So the durations add up to the track's length to the tick, and the
/// edit list begins at media time 0, whatever gaps the times have. Offsets that are never negative
/// would need both shifted by the largest gap that the reordering crosses.
std::vector<std::uint8_t> movieBox(const MovieTrack& track);

} // namespace vistrane
