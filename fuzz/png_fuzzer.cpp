// Any bytes as a picture: it is refused, or it can be drawn and saved, and what was saved is the
// same picture. What is decoded without libpng is what libpng makes of it.

#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "backends/pictures/DataBytes.h"
#include "backends/pictures/MediaCoreGraphics.h"
#include "backends/pictures/MediaCoreVideo.h"
#include "backends/pictures/Pictures.h"
#include "backends/pictures/PixelBuffer.h"
#include "backends/pictures/libpng_decoding.h"
#include "backends/pictures/png_decoding.h"

namespace vistrane {

namespace {

using Bytes = std::vector<std::uint8_t>;

class SilentObserver final : public MediaObserver {};

/// Small pictures take a short time and find as much.
constexpr PictureLimits limits{1024, 1U << 16, 1U << 20};

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

std::size_t number(const Bytes& bytes, std::size_t offset) {
    return std::size_t{bytes[offset]} << 24 | std::size_t{bytes[offset + 1]} << 16 |
           std::size_t{bytes[offset + 2]} << 8 | bytes[offset + 3];
}

/// Gives each chunk its right checksum: hardly any change of a file would get past them.
void repairChecksums(Bytes& file) {
    std::size_t offset = 8;
    while (offset + 12 <= file.size()) {
        const std::size_t length = number(file, offset);
        if (length > file.size() - offset - 12) {
            return;
        }
        const uLong sum = ::crc32(0, file.data() + offset + 4, static_cast<uInt>(length + 4));
        for (std::size_t i = 0; i < 4; ++i) {
            file[offset + 8 + length + i] = static_cast<std::uint8_t>(sum >> (24 - 8 * i));
        }
        offset += 12 + length;
    }
}

/// The data of the IDAT chunks in one, and where each byte of them is in the file.
struct PixelStream {
    Bytes bytes;
    std::vector<std::size_t> places;
};

PixelStream pixelStreamOf(const Bytes& file) {
    PixelStream stream;
    for (std::size_t offset = 8; offset + 12 <= file.size();) {
        const std::size_t length = number(file, offset);
        if (length > file.size() - offset - 12) {
            break;
        }
        const bool isData = std::equal(file.begin() + std::ptrdiff_t(offset) + 4,
                                       file.begin() + std::ptrdiff_t(offset) + 8, "IDAT");
        for (std::size_t i = 0; isData && i < length; ++i) {
            stream.places.push_back(offset + 8 + i);
            stream.bytes.push_back(file[offset + 8 + i]);
        }
        offset += 12 + length;
    }
    return stream;
}

/// Gives the pixels' stream the checksum of what zlib makes of it, if it gets as far. True if it
/// had another; the checksum of its chunk is then wrong.
bool repairStreamChecksum(Bytes& file) {
    const PixelStream stream = pixelStreamOf(file);
    if (stream.bytes.size() < 2) {
        return false;
    }
    Bytes made(std::size_t{1} << 20);
    z_stream zlib{};
    require(::inflateInit2(&zlib, -15) == Z_OK);
    zlib.next_in = const_cast<Bytef*>(stream.bytes.data()) + 2;
    zlib.avail_in = static_cast<uInt>(stream.bytes.size() - 2);
    zlib.next_out = made.data();
    zlib.avail_out = static_cast<uInt>(made.size());
    const int result = ::inflate(&zlib, Z_FINISH);
    const uLong sum = ::adler32(1, made.data(), static_cast<uInt>(zlib.total_out));
    const std::size_t end = 2 + zlib.total_in;
    ::inflateEnd(&zlib);
    bool changed = false;
    for (std::size_t i = 0; result == Z_STREAM_END && i < 4; ++i) {
        const auto right = static_cast<std::uint8_t>(sum >> (24 - 8 * i));
        if (end + i < stream.places.size()) {
            changed |= std::exchange(file[stream.places[end + i]], right) != right;
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

/// The pixels drawn, or nothing when the picture turned out to be damaged.
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

void tryTwins(const Bytes& bytes, PixelForm form) {
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
    tryTwins(bytes, static_cast<PixelForm>(bytes.size() % 3));
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
    vistrane::Bytes bytes(data, data + size);
    vistrane::tryPicture(bytes);
    vistrane::repairChecksums(bytes);
    vistrane::tryPicture(bytes);
    if (vistrane::repairStreamChecksum(bytes)) {
        vistrane::repairChecksums(bytes);
        vistrane::tryPicture(bytes);
    }
    return 0;
}
