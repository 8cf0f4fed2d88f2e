#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "bench/SamplePictures.h"

namespace vistrane::bench {

using Bytes = std::vector<std::uint8_t>;

// What this program reads and writes is compared with. Errors end the process. `rgba` is as long as
// the picture, its rows without gaps.

void readByLibpng(const Bytes& file, Bytes& rgba);

/// This program's own reading of a usual file, with another library in place of `Inflation`: isa-l
/// decompresses in parts of 128 KiB, libdeflate the whole picture.
void readByUsWithIsal(const Bytes& file, Bytes& rgba);
void readByUsWithLibdeflate(const Bytes& file, Bytes& rgba);

/// `level`: of compression, with the filter Up; -1 for the library's defaults.
Bytes writeByLibpng(const SamplePicture& picture, int level);

/// Empty blocks of each kind, empty IDAT chunks, and empty text chunks.
inline const std::vector<std::string> hostileKinds = {"stored", "fixed", "dynamic", "IDAT", "tEXt"};

/// A picture of one pixel with about so many bytes of these.
Bytes hostileFile(const std::string& kind, std::size_t length);

} // namespace vistrane::bench
