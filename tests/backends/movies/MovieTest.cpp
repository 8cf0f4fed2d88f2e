#include "tests/backends/movies/MovieTest.h"

#include <cmath>

namespace vistrane {

std::vector<std::uint8_t> randomBytes(std::size_t count, std::uint32_t seed) {
    std::vector<std::uint8_t> bytes(count);
    for (std::uint8_t& byte : bytes) {
        seed = seed * 1664525U + 1013904223U;
        byte = static_cast<std::uint8_t>(seed >> 24);
    }
    return bytes;
}

BufferPointer paint(std::size_t width, std::size_t height,
                    const std::function<Rgb(std::size_t, std::size_t)>& color) {
    BufferPointer buffer(PixelBuffer::make(width, height));
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
            const Rgb rgb = color(x, y);
            std::uint8_t* pixel = buffer->bytes() + y * buffer->bytesPerRow() + 4 * x;
            pixel[0] = 0x5A; // padding, which must change nothing
            for (std::size_t i = 0; i < 3; ++i) {
                pixel[1 + i] = static_cast<std::uint8_t>(rgb[i]);
            }
        }
    }
    return buffer;
}

BufferPointer plain(std::size_t width, std::size_t height, Rgb color) {
    return paint(width, height, [&](std::size_t, std::size_t) { return color; });
}

BufferPointer noise(std::size_t width, std::size_t height, int index) {
    const auto bytes =
        randomBytes(3 * width * height, static_cast<std::uint32_t>(index) * 2654435761U + 1);
    return paint(width, height, [&](std::size_t x, std::size_t y) {
        const std::size_t at = 3 * (y * width + x);
        return Rgb{bytes[at], bytes[at + 1], bytes[at + 2]};
    });
}

BufferPointer scene(std::size_t width, std::size_t height, int index) {
    return paint(width, height, [&](std::size_t x, std::size_t y) {
        const double wave = std::sin((static_cast<double>(x) + 2.0 * index) / 9.0);
        const int value = 128 + static_cast<int>(90 * wave);
        return Rgb{value, static_cast<int>(y * 2 % 256), 255 - value};
    });
}

NSDictionary trackSettings(std::int64_t width, std::int64_t height) {
    return {{AVVideoCodecKey, std::string(AVVideoCodecTypeH264)},
            {AVVideoScalingModeKey, std::string(AVVideoScalingModeResizeAspect)},
            {AVVideoWidthKey, width},
            {AVVideoHeightKey, height}};
}

OpenMovie::OpenMovie(Movies& movies, const std::string& path, std::int64_t trackWidth,
                     std::int64_t trackHeight)
    : width(static_cast<std::size_t>(trackWidth)), height(static_cast<std::size_t>(trackHeight)) {
    AVAssetWriterResult result =
        movies.assetWriterWithURL(NSURL::fileURLWithPath(path), AVFileTypeQuickTimeMovie);
    creationError = result.error;
    if (creationError) {
        return;
    }
    writer = result.writer;
    input = movies.assetWriterInputWithMediaType(AVMediaTypeVideo,
                                                 trackSettings(trackWidth, trackHeight));
    adaptor = movies.assetWriterInputPixelBufferAdaptorWithAssetWriterInput(input, {});
    writer->addInput(input);
    input->setExpectsMediaDataInRealTime(true);
    hasStarted = writer->startWriting();
    writer->startSessionAtSourceTime(kCMTimeZero);
}

void OpenMovie::finish(std::function<void()> handler) {
    input->markAsFinished();
    writer->finishWritingWithCompletionHandler(std::move(handler));
}

int OpenMovie::appendFrames(int count, BufferPointer (*picture)(std::size_t, std::size_t, int),
                            int frameRate) {
    int taken = 0;
    for (int i = 0; i < count; ++i) {
        taken += append(picture(width, height, i), frameTime(i, frameRate)) ? 1 : 0;
    }
    return taken;
}

CMTime frameTime(int index, int frameRate) {
    return index == 0 ? kCMTimeZero
                      : CMTimeAdd(CMTimeMake(index, frameRate), CMTimeMake(1, frameRate));
}

} // namespace vistrane
