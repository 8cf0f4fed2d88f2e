// Writes the seeds of png_fuzzer: one for each form of PNG file, and some with rarer chunks.
// make_png_seeds FOLDER

#include <lcms2.h>
#include <zlib.h>

#include <fstream>
#include <random>
#include <string>

#include "tests/backends/pictures/DeflateSamples.h"

namespace vistrane::testing {

namespace {

void write(const std::string& path, const Bytes& bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
}

/// The data of an iCCP chunk: sRGB's primaries, linear values.
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
    // Stored without compression, so that the fuzzer can change the profile.
    compress2(packed.data(), &packedLength, bytes.data(), length, 0);
    packed.resize(packedLength);
    packed.insert(packed.begin(), {'p', 0, 0});
    return packed;
}

/// Noise in chunks of literals, just long enough to be decoded in pairs.
Bytes literalsPng() {
    constexpr std::uint32_t width = 40;
    constexpr std::size_t rowBytes = 1 + 3 * width;
    constexpr std::size_t rowsAtOnce = 10;
    constexpr std::uint32_t height = 5 * rowsAtOnce;
    std::mt19937 random(1); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same seeds in every build
    const Bytes pixels = randomRows(random, rowBytes, rowBytes * height, 200);
    return pngAround({2, 8, false, false}, width, height,
                     literalBlocks(pixels, rowBytes * rowsAtOnce));
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
