// Damaged PNG files as the program reads them, against a plain use of libpng. What libpng reads
// without a warning is read, and whatever is read has libpng's pixels. Damage behind the pixels
// costs no frame here: libpng then judges the file without it.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <random>
#include <sstream>
#include <string_view>
#include <utility>

#include "backends/pictures/png_decoding.h"
#include "tests/backends/pictures/DeflateSamples.h"
#include "tests/backends/pictures/PngSamples.h"

namespace vistrane::testing {
namespace {

/// Like `readByLibpng`.
constexpr PictureLimits limits{4096, 4096 * 4096, 1U << 20};

/// With VISTRANE_SOAK=full a million, otherwise as many as the CI has time for.
int inputCount() {
    const char* const value = std::getenv("VISTRANE_SOAK");
    return value != nullptr && std::string_view(value) == "full" ? 1'000'000 : 100'000;
}

/// What the program reads.
struct Read {
    /// RGBA. Nothing if the file is refused.
    std::optional<Bytes> pixels;
    std::string refusal;
};

Read readByUs(const Bytes& file) {
    const auto read = readPngHeader(file, limits);
    const auto* header = std::get_if<PngHeader>(&read);
    if (header == nullptr) {
        return {std::nullopt, std::get<PngRefusal>(read).what};
    }
    const std::size_t stride = bytesPerPixel(PixelForm::RGBA) * header->width;
    Bytes pixels(stride * header->height);
    const auto fault = decodePng(file, *header, PixelForm::RGBA, pixels.data(),
                                 static_cast<std::ptrdiff_t>(stride));
    return fault ? Read{std::nullopt, *fault} : Read{std::move(pixels), {}};
}

std::string hexOf(const Bytes& bytes) {
    std::ostringstream text;
    for (const std::uint8_t byte : bytes) {
        text << std::hex << std::setw(2) << std::setfill('0') << int{byte};
    }
    return text.str();
}

/// The file up to its pixels, with a right end.
Bytes withoutItsEnd(const Bytes& file) {
    std::size_t length = 0;
    for (const ChunkPlace& place : chunksOf(file)) {
        if (place.type == "IDAT") {
            length = place.offset + 12 + place.dataLength;
        }
    }
    Bytes result(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length));
    append(result, chunk("IEND", {}));
    return result;
}

std::vector<Bytes> wholeFiles() {
    std::vector<Bytes> files;
    for (const PngForm& form : allPngForms()) {
        files.push_back(randomPng(form, 7, 5, 11).file);
        files.push_back(withDensity(withSplitData(files.back(), 9), 2835, 2835));
        files.push_back(
            withChunkBefore(files[files.size() - 2], "IEND", chunk("tEXt", Bytes{'k', 0, 'v'})));
    }
    std::mt19937 random(21);
    for (int i = 0; i < 60; ++i) {
        const PngForm form{i % 2 == 0 ? 2 : 6, 8, false, false};
        const Bytes stream = zlibStream(random, form.rowBytes(30), 8);
        files.push_back(pngAround(form, 30, 8, {&stream, 1}));
    }
    return files;
}

/// One change of the kinds that disks, networks and other programs make.
void damage(Bytes& file, std::mt19937& random) {
    const auto place = [&] {
        return file.begin() + static_cast<std::ptrdiff_t>(below(random, file.size()));
    };
    const auto part = [&](auto start) {
        const auto rest = static_cast<std::size_t>(file.end() - start);
        return start + static_cast<std::ptrdiff_t>(std::min<std::size_t>(rest, below(random, 20)));
    };
    if (file.empty()) {
        return;
    }
    const auto start = place();
    switch (below(random, 7)) {
    case 0:
        *start = static_cast<std::uint8_t>(random());
        break;
    case 1:
        file.erase(start, part(start));
        break;
    case 2:
        file.insert(start, static_cast<std::uint8_t>(random()));
        break;
    case 3:
        std::fill(start, part(start), std::uint8_t{0});
        break;
    case 4: {
        const Bytes repeated(start, part(start));
        file.insert(place(), repeated.begin(), repeated.end());
        break;
    }
    case 5:
        file.erase(start, file.end());
        break;
    default:
        *start ^= static_cast<std::uint8_t>(1U << below(random, 8));
    }
}

TEST(PngMutations, AreReadLikeLibpngOrRefused) {
    std::mt19937 random(20261122);
    const std::vector<Bytes> files = wholeFiles();
    const int count = inputCount();
    int read = 0;
    int rescued = 0;
    int differences = 0;
    for (int input = 0; input < count && differences < 10; ++input) {
        Bytes file = files[below(random, files.size())];
        for (unsigned changes = 1 + below(random, 3); changes > 0; --changes) {
            damage(file, random);
        }
        // Without right checksums hardly any change would reach the decoders.
        file = below(random, 4) == 0 ? file : withRightChecksums(file);
        const auto [ours, refusal] = readByUs(file);
        auto theirs = readByLibpng(file);
        if (ours && !theirs) {
            theirs = readByLibpng(withoutItsEnd(file));
            ++rescued;
        }
        // The standard forbids to skip such a chunk, but libpng does behind the pixels.
        const bool isCritical = refusal.find("unknown critical chunk") != std::string::npos;
        const bool isSame =
            ours ? theirs && *ours == theirs->rgba : !theirs || theirs->warned || isCritical;
        if (!isSame) {
            ++differences;
            ADD_FAILURE() << "input " << input << ", "
                          << (ours ? "read with other pixels than libpng's" : refusal) << ": "
                          << hexOf(file);
        }
        read += ours ? 1 : 0;
        if (count > 100'000 && (input + 1) % 10'000 == 0) {
            std::cerr << "\r" << input + 1 << " of " << count << std::flush;
        }
    }
    std::cout << read << " of " << count << " read, " << rescued << " of these only here\n";
    EXPECT_GT(read, count / 20);
    EXPECT_GT(rescued, 0);
}

} // namespace
} // namespace vistrane::testing
