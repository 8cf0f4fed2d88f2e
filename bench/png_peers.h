#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "bench/SamplePictures.h"

namespace vistrane::bench {

using Bytes = std::vector<std::uint8_t>;

// The peers for reading and writing PNG files. Errors end the process. `rgba` has the size of the
// picture, with contiguous rows.

void readByLibpng(const Bytes& file, Bytes& rgba);

/// This program's own reader for usual files, with another library instead of `Inflation`: isa-l
/// decompresses in parts of 128 KiB, libdeflate the whole picture.
void readByUsWithIsal(const Bytes& file, Bytes& rgba);
void readByUsWithLibdeflate(const Bytes& file, Bytes& rgba);

/// `level`: the compression level, with the filter Up; -1 for the library's defaults.
Bytes writeByLibpng(const SamplePicture& picture, int level);

/// Empty blocks of each kind, empty IDAT chunks, and empty text chunks.
inline const std::vector<std::string> hostileKinds = {"stored", "fixed", "dynamic", "IDAT", "tEXt"};

/// A picture of one pixel with about `length` bytes of these.
Bytes hostileFile(const std::string& kind, std::size_t length);

} // namespace vistrane::bench
