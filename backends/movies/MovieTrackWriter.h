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

/// The near side of a track: checks each picture and its time, brings it to the track's size and
/// colours and hands it to the job. The writer's thread only.
class MovieTrackWriter {
public:
    /// A track without a size (either side is 0 or less) takes that of its first picture.
    MovieTrackWriter(std::shared_ptr<MovieJob> job, std::int64_t width, std::int64_t height);

    /// Nothing when a track of that size can be made.
    static std::optional<NSError> sizeError(std::int64_t width, std::int64_t height);

    /// Writing has started.
    void begin() { isBegun_ = true; }
    bool isBegun() const { return isBegun_; }
    void startSession(CMTime time) { clock_.startSession(time); }

    /// Taken when nothing is returned; else why not. The observer is told either way.
    std::optional<NSError> append(CVPixelBufferRef buffer, CMTime time);

    /// May wait a tenth of a second for room.
    bool isReady();

    /// Nothing will be appended any more.
    void end() { isEnded_ = true; }

    /// Hands on what is still held back, and asks the job to finish.
    void finish(std::function<void()> handler);

private:
    std::optional<NSError> take(CVPixelBufferRef buffer, CMTime time);
    std::optional<NSError> stateError() const;
    std::optional<NSError> takeSize(const PictureView& picture);
    FramePointer convert(const PictureView& picture);
    std::optional<NSError> pushHeldFrame(std::int32_t timescale);

    std::shared_ptr<MovieJob> job_;
    std::int64_t width_;
    std::int64_t height_;
    std::optional<PictureFitter> fitter_; // there when the size is known
    TrackClock clock_;
    /// The picture at time zero, as long as no other tells the timescale.
    FramePointer heldFrame_;
    bool isShapeSet_ = false;
    bool isBegun_ = false;
    bool isEnded_ = false;
};

} // namespace vistrane
