// Writes the fuzzer's inputs to begin with, one for each form of PNG file and some with rarer
// parts: make_png_seeds FOLDER

#include <lcms2.h>
#include <zlib.h>

#include <fstream>
#include <string>

#include "tests/media/pictures/PngSamples.h"

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

void writeSeeds(const std::string& folder) {
    int number = 0;
    for (const PngForm& form : allPngForms()) {
        write(folder + "/form" + std::to_string(number++) + ".png", randomPng(form, 5, 3).file);
    }
    const Bytes plain = randomPng({2, 8, false, false}, 7, 6).file;
    write(folder + "/density.png", withDensity(plain, 5669, 2835));
    write(folder + "/split.png", withSplitData(plain, 11));
    write(folder + "/profile.png", withChunkBefore(plain, "IDAT", chunk("iCCP", linearProfile())));
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
