#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "backends/movies/MovieOptions.h"
#include "backends/movies/VideoEncoder.h"
#include "platform/foundation/NSError.h"

struct AVCodec;
struct AVCodecContext;
struct AVFrame;
struct AVPacket;

namespace vistrane {

/// Frees objects of libavutil and libavcodec.
struct LibavDeleter {
    void operator()(AVCodecContext* context) const;
    void operator()(AVFrame* frame) const;
    void operator()(AVPacket* packet) const;
};
template <typename Object>
using LibavPointer = std::unique_ptr<Object, LibavDeleter>;

/// A frame with reference-counted planes, so that the encoder can keep them without a copy.
class LibavFrame final : public VideoFrame {
public:
    explicit LibavFrame(LibavPointer<AVFrame> frame) : frame_(std::move(frame)) {}

    PlanarPicture planes() override;
    bool isWritable() const override;

    AVFrame& frame() { return *frame_; }

private:
    LibavPointer<AVFrame> frame_;
};

/// The encoder, on libavcodec: libx264 if available, otherwise the first H.264 encoder that can be
/// opened.
class H264Encoder final : public VideoEncoder {
public:
    /// Why no encoder is available; nothing if one is.
    static std::optional<NSError> availability();

    explicit H264Encoder(MovieOptions options) : options_(std::move(options)) {}

    std::optional<NSError> open(int width, int height, std::int32_t timescale) override;
    std::optional<NSError> encode(VideoFrame& frame, std::int64_t time, const Sink& sink) override;
    std::optional<NSError> finish(const Sink& sink) override;
    std::vector<std::uint8_t> configuration() const override;

private:
    std::optional<NSError> openWith(const AVCodec& codec, int width, int height,
                                    std::int32_t timescale);
    std::optional<NSError> send(const AVFrame* frame, const Sink& sink);
    std::optional<NSError> receive(const Sink& sink);
    void takeParameterSets(const std::uint8_t* bytes, std::size_t count);
    void repackage();

    const MovieOptions options_;
    LibavPointer<AVCodecContext> context_;
    LibavPointer<AVPacket> packet_;
    EncodedPicture picture_;
    std::vector<std::uint8_t> sequenceParameters_;
    std::vector<std::uint8_t> pictureParameters_;
};

} // namespace vistrane
