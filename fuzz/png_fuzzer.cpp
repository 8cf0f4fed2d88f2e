// Reads any bytes as a picture. It is refused, or it can be drawn and saved, and the saved picture
// is the same. Pictures that are decoded without libpng equal those of libpng.

#include <cstdint>
#include <cstdlib>
#include <utility>
#include <vector>

#include "backends/pictures/DataBytes.h"
#include "backends/pictures/MediaCoreGraphics.h"
#include "backends/pictures/MediaCoreVideo.h"
#include "backends/pictures/Pictures.h"
#include "backends/pictures/PixelBuffer.h"
#include "backends/pictures/libpng_decoding.h"
#include "backends/pictures/png_decoding.h"
#include "tests/backends/pictures/DeflateSamples.h"

namespace vistrane {

namespace {

using testing::Bytes;

class SilentObserver final : public PictureObserver {};

/// Small pictures find the same defects in less time.
constexpr PictureLimits limits{1024, 1U << 16, 1U << 20};

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

/// Corrects the checksum of the pixel stream, if zlib can decompress it; otherwise hardly any
/// change of a stream would be accepted. Returns whether the checksum was wrong.
bool repairStreamChecksum(Bytes& file) {
    Bytes stream;
    std::vector<std::size_t> places;
    for (const testing::ChunkPlace& place : testing::chunksOf(file)) {
        for (std::size_t i = 0; place.type == "IDAT" && i < place.dataLength; ++i) {
            places.push_back(place.offset + 8 + i);
            stream.push_back(file[places.back()]);
        }
    }
    const testing::Inflated inflated = testing::inflateByZlib(stream, std::size_t{1} << 20);
    const Bytes checksum = inflated.checksum();
    bool changed = false;
    for (std::size_t i = 0; inflated.ended && i < checksum.size(); ++i) {
        if (inflated.end + i < places.size()) {
            std::uint8_t& byte = file[places[inflated.end + i]];
            changed |= std::exchange(byte, checksum[i]) != checksum[i];
        }
    }
    return changed;
}

struct Kits {
    SilentObserver observer;
    Pictures pictures{observer, limits};
    MediaCoreVideo video;
    MediaCoreGraphics graphics{video};
};

/// The drawn pixels; nothing if the picture is damaged.
Bytes draw(Kits& kits, const NSImage& image, std::size_t width, std::size_t height, NSPoint point,
           NSCompositingOperation operation) {
    CVPixelBufferRef buffer = nullptr;
    kits.video.CVPixelBufferCreate(width, height, kCVPixelFormatType_32ARGB, {}, &buffer);
    kits.video.CVPixelBufferLockBaseAddress(buffer, 0);
    CGColorSpaceRef space = kits.graphics.CGColorSpaceCreateWithName(kCGColorSpaceGenericRGB);
    CGContextRef context = kits.graphics.CGBitmapContextCreate(
        kits.video.CVPixelBufferGetBaseAddress(buffer), width, height, 8,
        kits.video.CVPixelBufferGetBytesPerRow(buffer), space, kCGImageAlphaNoneSkipFirst);
    Bytes pixels;
    if (context != nullptr) {
        kits.pictures.saveGraphicsState();
        kits.pictures.setCurrentContext(kits.pictures.graphicsContextWithCGContext(context, false));
        image.drawAtPoint(point, NSZeroRect, operation, 1.0);
        kits.pictures.restoreGraphicsState();
        const PixelBuffer& drawn = *PixelBuffer::from(buffer);
        if (!drawn.damage()) {
            pixels.assign(drawn.bytes(), drawn.bytes() + drawn.bytesPerRow() * drawn.height());
        }
    }
    kits.video.CVPixelBufferUnlockBaseAddress(buffer, 0);
    kits.graphics.CFRelease(context);
    kits.graphics.CGColorSpaceRelease(space);
    kits.video.CVBufferRelease(buffer);
    return pixels;
}

void compareWithLibpng(const Bytes& bytes, PixelForm form) {
    const auto read = readPngHeader(bytes, limits);
    const auto* header = std::get_if<PngHeader>(&read);
    if (header == nullptr) {
        return;
    }
    const std::size_t stride = bytesPerPixel(form) * header->width;
    Bytes ours(stride * header->height);
    Bytes theirs(ours.size());
    if (decodeUsualPng(bytes, *header, form, ours.data(), static_cast<std::ptrdiff_t>(stride))) {
        require(!decodeByLibpng(bytes, *header, form, theirs.data(),
                                static_cast<std::ptrdiff_t>(stride)));
        require(ours == theirs);
    }
}

void tryPicture(const Bytes& bytes) {
    compareWithLibpng(bytes, static_cast<PixelForm>(bytes.size() % 3));
    Kits kits;
    const auto image = kits.pictures.imageWithData(DataBytes::copyOf(bytes));
    if (!image) {
        return;
    }
    const double points = image->size().width * image->size().height;
    if (points > 1 << 18) {
        return;
    }
    const auto width = static_cast<std::size_t>(image->size().width);
    const auto height = static_cast<std::size_t>(image->size().height);
    const Bytes drawn = draw(kits, *image, width, height, {0, 0}, NSCompositingOperationCopy);
    draw(kits, *image, 13, 7, {bytes.back() / 16.0 - 8.0, bytes.size() % 9 - 4.5},
         NSCompositingOperationSourceOver);

    const auto tiff = image->TIFFRepresentation();
    require(drawn.empty() == !tiff);
    if (!tiff) {
        return;
    }
    const auto rep = kits.pictures.imageRepWithData(tiff);
    require(rep != nullptr);
    const auto saved =
        kits.pictures.imageWithData(rep->representationUsingType(NSBitmapImageFileTypePNG, {}));
    require(saved != nullptr && saved->size() == image->size());
    require(draw(kits, *saved, width, height, {0, 0}, NSCompositingOperationCopy) == drawn);
}

} // namespace

} // namespace vistrane

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Corrects the checksums every time, because the fuzzer hardly ever finds one.
    vistrane::testing::Bytes bytes(data, data + size);
    vistrane::tryPicture(bytes);
    bytes = vistrane::testing::withRightChecksums(bytes);
    vistrane::tryPicture(bytes);
    if (vistrane::repairStreamChecksum(bytes)) {
        vistrane::tryPicture(vistrane::testing::withRightChecksums(bytes));
    }
    return 0;
}
