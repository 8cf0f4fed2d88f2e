#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "backends/pictures/DataBytes.h"
#include "backends/pictures/DecodedPicture.h"
#include "backends/pictures/MediaCoreGraphics.h"
#include "backends/pictures/MediaCoreVideo.h"
#include "backends/pictures/PictureData.h"
#include "backends/pictures/Pictures.h"
#include "backends/pictures/PixelBuffer.h"
#include "tests/backends/pictures/PngSamples.h"
#include "tests/support/WorkFolder.h"

namespace vistrane::testing {

/// Records the calls that a front end would get.
class RecordingObserver final : public PictureObserver {
public:
    void imageCouldNotBeRead(const std::string& path, const NSError& reason) override {
        unread.emplace_back(path, reason);
    }
    void imageHasFlaw(const NSError& flaw) override { flaws.push_back(flaw); }
    void fileWasWritten(const std::string& path) override { written.push_back(path); }
    void fileCouldNotBeWritten(const std::string& path, const NSError& reason) override {
        unwritten.emplace_back(path, reason);
    }

    std::vector<std::pair<std::string, NSError>> unread;
    std::vector<NSError> flaws;
    std::vector<std::string> written;
    std::vector<std::pair<std::string, NSError>> unwritten;
};

inline void put(const std::string& path, const Bytes& bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
}

inline Bytes get(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

inline Bytes bytesOf(const std::shared_ptr<NSData>& data) {
    return data ? Bytes(data->bytes(), data->bytes() + data->length()) : Bytes();
}

/// Data as a camera delivers them: an opaque picture of these RGB pixels.
inline std::shared_ptr<NSData> stillOf(std::uint32_t width, std::uint32_t height,
                                       const Bytes& rgb) {
    return std::make_shared<PictureData>(std::make_shared<DecodedPicture>(
        PictureShape{width, height, std::nullopt, false}, "still", *ByteArray::copyOf(rgb)));
}

/// One drawn picture: red, green and blue of each pixel; the damage, if any.
struct Drawn {
    std::size_t width = 0;
    Bytes rgb;
    std::optional<NSError> damage;

    Bytes at(std::size_t x, std::size_t y) const {
        const auto start = rgb.begin() + std::ptrdiff_t((y * width + x) * 3);
        return Bytes(start, start + 3);
    }
};

/// The arguments of `drawAtPoint`, or of `drawInRect` if there is a size, and what they draw into.
struct DrawnAt {
    NSPoint point{};
    std::optional<NSSize> size = std::nullopt;
    NSRect from{};
    NSCompositingOperation operation = NSCompositingOperationCopy;
    double fraction = 1.0;
    bool flipped = false;
    std::uint8_t background = 0;
};

/// Another colour for each place; for `pngOf`.
inline std::uint32_t gradient(std::uint32_t x, std::uint32_t y) {
    return (x * 7 % 256) << 24 | (y * 5 % 256) << 16 | ((x + y) % 256) << 8 | 255;
}

/// The kits as a front end connects them.
class PicturesTest : public ::testing::Test {
protected:
    std::shared_ptr<NSImage> load(const Bytes& file) {
        return pictures_.imageWithData(DataBytes::copyOf(file));
    }

    /// Draws as the frames of a movie are drawn: into a new buffer, at the bottom left.
    Drawn draw(const std::shared_ptr<NSImage>& image, std::size_t width, std::size_t height) {
        return drawAt(image, width, height, {});
    }

    /// Draws into a new buffer of that size.
    Drawn drawAt(const std::shared_ptr<NSImage>& image, std::size_t width, std::size_t height,
                 const DrawnAt& how) {
        CVPixelBufferRef buffer = nullptr;
        EXPECT_EQ(video_.CVPixelBufferCreate(width, height, kCVPixelFormatType_32ARGB, {}, &buffer),
                  kCVReturnSuccess);
        video_.CVPixelBufferLockBaseAddress(buffer, 0);
        auto* rows = static_cast<std::uint8_t*>(video_.CVPixelBufferGetBaseAddress(buffer));
        const std::size_t stride = video_.CVPixelBufferGetBytesPerRow(buffer);
        std::fill_n(rows, stride * height, how.background);
        CGColorSpaceRef space = graphics_.CGColorSpaceCreateWithName(kCGColorSpaceGenericRGB);
        CGContextRef context = graphics_.CGBitmapContextCreate(rows, width, height, 8, stride,
                                                               space, kCGImageAlphaNoneSkipFirst);
        pictures_.saveGraphicsState();
        pictures_.setCurrentContext(pictures_.graphicsContextWithCGContext(context, how.flipped));
        if (how.size) {
            image->drawInRect({how.point, *how.size}, how.from, how.operation, how.fraction);
        } else {
            image->drawAtPoint(how.point, how.from, how.operation, how.fraction);
        }
        pictures_.restoreGraphicsState();
        Drawn drawn{width, {}, PixelBuffer::from(buffer)->damage()};
        for (std::size_t y = 0; y < height; ++y) {
            for (std::size_t x = 0; x < width; ++x) {
                const std::uint8_t* pixel = rows + y * stride + x * 4;
                drawn.rgb.insert(drawn.rgb.end(), pixel + 1, pixel + 4);
            }
            // The padding of the rows stays unchanged.
            for (std::size_t i = width * 4; i < stride; ++i) {
                EXPECT_EQ(rows[y * stride + i], how.background);
            }
        }
        video_.CVPixelBufferUnlockBaseAddress(buffer, 0);
        graphics_.CFRelease(context);
        graphics_.CGColorSpaceRelease(space);
        video_.CVBufferRelease(buffer);
        return drawn;
    }

    /// Encodes as stills are saved: to TIFF, to a rep, to PNG.
    std::shared_ptr<NSData> encode(const std::shared_ptr<NSImage>& image) {
        const auto rep = pictures_.imageRepWithData(image->TIFFRepresentation());
        return rep ? rep->representationUsingType(NSBitmapImageFileTypePNG, {}) : nullptr;
    }

    RecordingObserver observer_;
    Pictures pictures_{observer_};
    MediaCoreVideo video_;
    MediaCoreGraphics graphics_{video_};
    WorkFolder folder_;
};

/// The pixels over black, as a context without alpha shows them.
inline Bytes overBlack(const Bytes& rgba) {
    Bytes rgb;
    for (std::size_t i = 0; i < rgba.size(); ++i) {
        if (i % 4 != 3) {
            const unsigned alpha = rgba[i / 4 * 4 + 3];
            rgb.push_back(static_cast<std::uint8_t>((rgba[i] * alpha + 127) / 255));
        }
    }
    return rgb;
}

} // namespace vistrane::testing
