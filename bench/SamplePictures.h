#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vistrane::bench {

/// A generated picture: pixels of three bytes, contiguous rows.
struct SamplePicture {
    std::string kind;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint8_t> rgb;
};

/// noise: a scene with sensor noise. gradient: smooth. screen: windows with text. flat: one colour.
inline const std::vector<std::string> sampleKinds = {"noise", "gradient", "screen", "flat"};

/// The same picture in every run. `frame` moves its content, like between the frames of a movie.
SamplePicture samplePicture(const std::string& kind, std::uint32_t width, std::uint32_t height,
                            unsigned frame = 0);

} // namespace vistrane::bench
