#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "backends/movies/MovieOptions.h"
#include "backends/movies/color_conversion.h"
#include "platform/foundation/NSError.h"

// The interface of the encoder module, a shared object that is loaded with the first movie and
// links libavcodec and libavutil. The rest of this folder uses only these classes.

namespace vistrane {

/// An uncompressed 4:2:0 picture in the encoder's memory. One thread at a time.
class VideoFrame {
public:
    virtual ~VideoFrame() = default;
    VideoFrame(const VideoFrame&) = delete;
    VideoFrame& operator=(const VideoFrame&) = delete;

    /// The pixels are initially undefined.
    virtual PlanarPicture planes() = 0;

    /// Whether the encoder holds no reference to the pixels, so that they may be overwritten.
    virtual bool isWritable() const = 0;

protected:
    VideoFrame() = default;
};

/// One compressed picture as a movie file stores it: NAL units, each preceded by its length in 4
/// bytes.
struct EncodedPicture {
    std::vector<std::uint8_t> bytes;
    std::int64_t time = 0; // presentation time, in ticks
    bool isKey = false;
};

/// Compresses to H.264: 4:2:0, BT.709, limited range, tagged accordingly. One thread.
class VideoEncoder {
public:
    /// Receives the pictures in decoding order. An error ends the encoding and becomes its result.
    using Sink = std::function<std::optional<NSError>(const EncodedPicture&)>;

    /// The longest side of a coded picture, in pixels: libx264's limit.
    static constexpr std::size_t largestSide = 16384;

    virtual ~VideoEncoder() = default;
    VideoEncoder(const VideoEncoder&) = delete;
    VideoEncoder& operator=(const VideoEncoder&) = delete;

    /// Call first. Width and height are even; `timescale` is in ticks per second. The encoder
    /// starts its threads here, so they inherit the calling thread's priority.
    virtual std::optional<NSError> open(int width, int height, std::int32_t timescale) = 0;

    /// Encodes a frame of the same module, presented at tick `time`. Times must increase. The
    /// pixels are only read, possibly after the return: see `VideoFrame::isWritable`.
    virtual std::optional<NSError> encode(VideoFrame& frame, std::int64_t time,
                                          const Sink& sink) = 0;

    /// Call after the last frame. Passes on the pictures that the encoder still holds.
    virtual std::optional<NSError> finish(const Sink& sink) = 0;

    /// The decoder configuration record (ISO/IEC 14496-15, 5.3.3.1). Empty until the first picture
    /// is passed on.
    virtual std::vector<std::uint8_t> configuration() const = 0;

protected:
    VideoEncoder() = default;
};

/// The module's entry. Any thread.
class EncoderModule {
public:
    EncoderModule(const EncoderModule&) = delete;
    EncoderModule& operator=(const EncoderModule&) = delete;

    /// Why no movie can be encoded on this system; nothing if one can.
    virtual std::optional<NSError> availability() const = 0;

    /// A frame of that size, both sides even. Null if there is not enough memory.
    virtual std::unique_ptr<VideoFrame> makeFrame(int width, int height) const = 0;

    virtual std::unique_ptr<VideoEncoder> makeEncoder(const MovieOptions& options) const = 0;

protected:
    EncoderModule() = default;
    ~EncoderModule() = default;
};

} // namespace vistrane

/// The only symbol that the program looks up in the module. The module owns the object and never
/// destroys it.
extern "C" const vistrane::EncoderModule* vistraneEncoderModule();
