#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "backends/movies/MovieJob.h"
#include "backends/movies/PictureFitter.h"
#include "backends/movies/TrackClock.h"
#include "platform/coremedia/CMTime.h"
#include "platform/corevideo/CoreVideo.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

/// The appending side of a track: checks each picture and its time, converts it to the track's size
/// and colour space, and queues it in the job. The writer's thread only.
class MovieTrackWriter {
public:
    /// A track without a size (either side is 0 or less) takes that of its first picture.
    MovieTrackWriter(std::shared_ptr<MovieJob> job, std::int64_t width, std::int64_t height);

    /// Why a track cannot have that size; nothing if it can.
    static std::optional<NSError> sizeError(std::int64_t width, std::int64_t height);

    /// Call when writing has started.
    void begin() { isBegun_ = true; }
    bool isBegun() const { return isBegun_; }
    void startSession(CMTime time) { clock_.startSession(time); }

    /// Why the picture is refused; nothing if it is accepted. Reports either to the observer.
    std::optional<NSError> append(CVPixelBufferRef buffer, CMTime time);

    /// May wait for room for up to 0.1 s.
    bool isReady();

    /// Call after the last picture.
    void end() { isEnded_ = true; }

    /// Queues the held frame and requests that the job finish.
    void finish(std::function<void()> handler);

private:
    std::optional<NSError> take(CVPixelBufferRef buffer, CMTime time);
    std::optional<NSError> stateError() const;
    std::optional<NSError> takeSize(const PictureView& picture);
    std::unique_ptr<VideoFrame> convert(const PictureView& picture);
    std::optional<NSError> pushHeldFrame(std::int32_t timescale);

    std::shared_ptr<MovieJob> job_;
    std::int64_t width_;
    std::int64_t height_;
    std::optional<PictureFitter> fitter_; // once the size is known
    TrackClock clock_;
    /// The frame at time zero, held until a later time determines the timescale.
    std::unique_ptr<VideoFrame> heldFrame_;
    bool isShapeSet_ = false;
    bool isBegun_ = false;
    bool isEnded_ = false;
};

} // namespace vistrane
