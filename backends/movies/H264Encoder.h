#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "backends/movies/MovieOptions.h"
#include "platform/foundation/NSError.h"

struct AVCodec;
struct AVCodecContext;
struct AVFrame;
struct AVPacket;

namespace vistrane {

struct FrameDeleter {
    void operator()(AVFrame* frame) const;
};
using FramePointer = std::unique_ptr<AVFrame, FrameDeleter>;

/// A 4:2:0 frame of that size, both even; its planes are undefined. Null without memory.
FramePointer makeFrame(int width, int height);

/// Whether the frame's planes belong to it alone, so that they may be written anew.
bool isFrameUnshared(const AVFrame& frame);

/// One compressed picture, as a movie file holds it: each NAL unit behind its length in 4 bytes.
struct EncodedPicture {
    std::vector<std::uint8_t> bytes;
    std::int64_t time = 0; // in ticks
    bool isKey = false;
};

/// H.264 by libavcodec: 4:2:0, BT.709 in limited range, tagged so. One thread.
class H264Encoder {
public:
    /// Takes each picture in the order of decoding; an error ends the encoding and is passed on.
    using Sink = std::function<std::optional<NSError>(const EncodedPicture&)>;

    /// Sides of the coded picture, in pixels: libx264's limit.
    static constexpr std::size_t largestSide = 16384;

    /// Why no movie can be encoded here; nothing when one can.
    static std::optional<NSError> availability(const MovieOptions& options);

    explicit H264Encoder(MovieOptions options);
    ~H264Encoder();
    H264Encoder(const H264Encoder&) = delete;
    H264Encoder& operator=(const H264Encoder&) = delete;

    bool isOpen() const { return context_ != nullptr; }

    /// Width and height are even; `timescale` is the number of ticks in a second.
    std::optional<NSError> open(int width, int height, std::int32_t timescale);

    /// Encodes a frame shown at tick `time`; times rise. The frame is only read.
    std::optional<NSError> encode(AVFrame& frame, std::int64_t time, const Sink& sink);

    /// No frame comes any more: hands out the pictures that are still inside.
    std::optional<NSError> finish(const Sink& sink);

    /// The decoder configuration record. Empty before the first picture has come out.
    std::vector<std::uint8_t> configuration() const;

private:
    struct ContextDeleter {
        void operator()(AVCodecContext* context) const;
    };
    struct PacketDeleter {
        void operator()(AVPacket* packet) const;
    };

    std::optional<NSError> openWith(const AVCodec& codec, int width, int height,
                                    std::int32_t timescale);
    std::optional<NSError> send(const AVFrame* frame, const Sink& sink);
    std::optional<NSError> receive(const Sink& sink);
    void takeParameterSets(const std::uint8_t* bytes, std::size_t count);
    void repackage();

    MovieOptions options_;
    std::unique_ptr<AVCodecContext, ContextDeleter> context_;
    std::unique_ptr<AVPacket, PacketDeleter> packet_;
    EncodedPicture picture_;
    std::vector<std::uint8_t> sequenceParameters_;
    std::vector<std::uint8_t> pictureParameters_;
};

} // namespace vistrane
