#pragma once

#include <cstddef>
#include <random>
#include <span>

#include "tests/backends/pictures/PngSamples.h"

namespace vistrane::testing {

/// A zlib stream of random blocks: stored ones, fixed codes and codes of its own with up to 15
/// bits, literals and matches. About one in four breaks a rule of the format somewhere.
///
/// It yields `rows` times `rowBytes` bytes, of which the first of each row is mostly a valid
/// filter number; a broken one may yield fewer or more.
Bytes randomStream(std::mt19937& random, std::size_t rowBytes, std::size_t rows);

/// Literals with one match at their end, whose length and distance have these symbols. The lengths
/// 286 and 287 do not exist and are made as if they were like 285, so are the distances 30 and 31
/// like 29. One row.
Bytes oneMatchStream(std::mt19937& random, std::size_t length, std::size_t symbol,
                     std::size_t farSymbol);

/// Random literals, then bytes that stand so far back, once more.
struct Match {
    std::size_t literals = 0;
    std::size_t distance = 0;
    std::size_t length = 0;
};

/// A zlib stream of these, in one block of fixed codes.
Bytes matchStream(std::mt19937& random, std::span<const Match> matches);

/// The same as the first by zlib, from random bytes, with random settings.
Bytes zlibStream(std::mt19937& random, std::size_t rowBytes, std::size_t rows);

/// A file of that size and form, neither interlaced nor with tRNS, around a stream.
Bytes pngAround(const PngForm& form, std::uint32_t width, std::uint32_t height,
                const Bytes& stream);

} // namespace vistrane::testing
