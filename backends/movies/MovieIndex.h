#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vistrane {

// Writes a QuickTime file's boxes ("atoms") around the encoder's pictures.
//
// Tried instead: the `mov` muxer of libavformat. Tables that are exact to the tick need decoding
// times shifted by 2^30 and a flag whose effect only tests show; wrong tables abort the process. It
// adds 37 shared libraries, 15 MB of packages, 12 ms to load and 8 MB of memory at 100,000 frames,
// and saves 300 lines.

/// One compressed picture in the file.
struct MovieSample {
    std::uint64_t offset = 0; // from the start of the file, in bytes
    std::uint32_t size = 0;   // in bytes
    std::int64_t time = 0;    // presentation time, in ticks
    bool isKey = false;       // decoding can start here
};

/// What the movie box describes: a movie with one video track.
struct MovieTrack {
    /// Display size in pixels. The coded picture may be larger by one in either direction.
    std::uint16_t width = 0;
    std::uint16_t height = 0;
    /// Ticks per second, of the track and of the movie.
    std::int32_t timescale = 0;
    /// Where the last picture ends, in ticks.
    std::int64_t end = 0;
    /// The decoder configuration record (ISO/IEC 14496-15, 5.3.3.1).
    std::vector<std::uint8_t> configuration;
    /// At least one, in decoding order. No two have the same time.
    std::vector<MovieSample> samples;
};

/// The start of a movie file, up to the first sample's bytes. The media box's size is left open:
/// `mediaBoxSize` is to be written at `mediaBoxSizeOffset` after the last sample.
std::vector<std::uint8_t> movieFileHeader();
inline constexpr std::size_t mediaBoxSizeOffset = 28;
std::array<std::uint8_t, 8> mediaBoxSize(std::uint64_t endOfSamples);

/// The movie box, which follows the last sample (QuickTime File Format, "Movie Atoms").
///
/// Sample durations are in presentation order, and signed composition offsets lead from there to
/// decoding order. So the durations add up to the track's length to the tick, and the edit list
/// starts at media time 0, whatever gaps the times have. Offsets that are never negative would
/// shift both by the largest gap that the reordering crosses.
std::vector<std::uint8_t> movieBox(const MovieTrack& track);

} // namespace vistrane
