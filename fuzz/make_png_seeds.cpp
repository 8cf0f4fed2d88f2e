// Writes the fuzzer's inputs to begin with, one for each form of PNG file and some with rarer
// parts: make_png_seeds FOLDER

#include <lcms2.h>
#include <zlib.h>

#include <algorithm>
#include <fstream>
#include <random>
#include <span>
#include <string>

#include "backends/pictures/LiteralBlock.h"
#include "tests/backends/pictures/PngSamples.h"

namespace vistrane::testing {

namespace {

void write(const std::string& path, const Bytes& bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
}

/// The data of an iCCP chunk: sRGB's primaries, values in proportion to light.
Bytes linearProfile() {
    const cmsCIExyY white = {0.3127, 0.3290, 1};
    const cmsCIExyYTRIPLE primaries = {{0.64, 0.33, 1}, {0.30, 0.60, 1}, {0.15, 0.06, 1}};
    cmsToneCurve* curve = cmsBuildGamma(nullptr, 1.0);
    cmsToneCurve* curves[] = {curve, curve, curve};
    cmsHPROFILE profile = cmsCreateRGBProfile(&white, &primaries, curves);
    cmsUInt32Number length = 0;
    cmsSaveProfileToMem(profile, nullptr, &length);
    Bytes bytes(length);
    cmsSaveProfileToMem(profile, bytes.data(), &length);
    cmsCloseProfile(profile);
    cmsFreeToneCurve(curve);
    Bytes packed(compressBound(length));
    uLongf packedLength = packed.size();
    // Not compressed, so that a changed byte is a changed profile.
    compress2(packed.data(), &packedLength, bytes.data(), length, 0);
    packed.resize(packedLength);
    packed.insert(packed.begin(), {'p', 0, 0});
    return packed;
}

/// Noise in chunks of nothing but literals, which are read two at a time: each is as long as that
/// takes, and the file no longer.
Bytes literalsPng() {
    constexpr std::uint32_t width = 40;
    constexpr std::size_t rowBytes = 1 + 3 * width;
    constexpr std::size_t rowsAtOnce = 10;
    constexpr std::uint32_t height = 5 * rowsAtOnce;
    std::mt19937 random(1);
    Bytes pixels(rowBytes * height);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        pixels[i] = static_cast<std::uint8_t>(i % rowBytes == 0 ? random() % 5 : random() % 200);
    }
    Bytes file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    const auto add = [&](const std::string& type, const Bytes& data) {
        const Bytes framed = chunk(type, data);
        file.insert(file.end(), framed.begin(), framed.end());
    };
    add("IHDR", {0, 0, 0, width, 0, 0, 0, height, 8, 2, 0, 0, 0});
    constexpr std::size_t part = rowBytes * rowsAtOnce;
    for (std::size_t from = 0; from < pixels.size(); from += part) {
        const bool last = from + part == pixels.size();
        const LiteralBlock block(std::span<const std::uint8_t>(pixels).subspan(from, part));
        Bytes data(block.room());
        data.resize(static_cast<std::size_t>(block.write(data.data(), last) - data.data()));
        if (from == 0) {
            data.insert(data.begin(), {0x78, 0x01});
        }
        if (last) {
            const uLong sum = ::adler32(1, pixels.data(), static_cast<uInt>(pixels.size()));
            for (const unsigned shift : {24U, 16U, 8U, 0U}) {
                data.push_back(static_cast<std::uint8_t>(sum >> shift));
            }
        }
        add("IDAT", data);
    }
    add("IEND", {});
    return file;
}

void writeSeeds(const std::string& folder) {
    int number = 0;
    for (const PngForm& form : allPngForms()) {
        write(folder + "/form" + std::to_string(number++) + ".png", randomPng(form, 5, 3).file);
    }
    const Bytes plain = randomPng({2, 8, false, false}, 7, 6).file;
    write(folder + "/density.png", withDensity(plain, 5669, 2835));
    write(folder + "/split.png", withSplitData(plain, 11));
    write(folder + "/profile.png", withChunkBefore(plain, "IDAT", chunk("iCCP", linearProfile())));
    write(folder + "/literals.png", literalsPng());
    const std::string raw = "P6\n# raw\n2 1\n255\nabcdef";
    write(folder + "/raw.ppm", Bytes(raw.begin(), raw.end()));
}

} // namespace

} // namespace vistrane::testing

int main(int count, char** arguments) {
    if (count != 2) {
        return 2;
    }
    vistrane::testing::writeSeeds(arguments[1]);
    return 0;
}
