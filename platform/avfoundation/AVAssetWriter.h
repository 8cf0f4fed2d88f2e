#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "platform/avfoundation/AVMediaFormat.h"
#include "platform/coremedia/CMTime.h"
#include "platform/corevideo/CoreVideo.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/NSObject.h"

namespace vistrane {

/// One track of a movie that is being written. The writer's thread only.
class AVAssetWriterInput : public NSObject {
public:
    virtual void setExpectsMediaDataInRealTime(bool realTime) = 0;

    /// May wait for room for up to 0.1 s, so that polling it in a loop uses no processor time.
    virtual bool isReadyForMoreMediaData() = 0;

    /// Call after the last picture.
    virtual void markAsFinished() = 0;
};

/// Appends pixel buffers to a track. The writer's thread only.
class AVAssetWriterInputPixelBufferAdaptor : public NSObject {
public:
    virtual AVAssetWriterInput& assetWriterInput() = 0;

    /// Appends a picture with the presentation time `time`. Times must increase. A picture whose
    /// size differs from the track's is scaled to fit, centred on black. The buffer is only read,
    /// and may be released after the call. Returns false if the picture is refused: no buffer, a
    /// buffer into which a damaged picture was drawn, a time out of order, or an earlier failure.
    /// The writer's `error` is the reason.
    virtual bool appendPixelBuffer(CVPixelBufferRef buffer, CMTime time) = 0;

    /// Null until writing has started.
    virtual CVPixelBufferPoolRef pixelBufferPool() = 0;
};

/// Writes one movie file. One thread.
///
/// The file appears under its name only when the movie is complete, and never replaces another
/// file. A writer that is destroyed before that leaves nothing behind.
class AVAssetWriter : public NSObject {
public:
    virtual void addInput(std::shared_ptr<AVAssetWriterInput> input) = 0;
    virtual bool startWriting() = 0;
    virtual void startSessionAtSourceTime(CMTime time) = 0;

    /// Why writing failed, otherwise why the last picture was refused. Nothing if neither happened.
    virtual std::optional<NSError> error() const = 0;

    /// Returns immediately. `handler` is called once, on any thread, when the file is complete or
    /// writing has failed. The writer may be destroyed meanwhile.
    virtual void finishWritingWithCompletionHandler(std::function<void()> handler) = 0;
};

/// A writer, or the reason why there is none. Creation has failed if and only if there is an error.
struct AVAssetWriterResult {
    std::shared_ptr<AVAssetWriter> writer;
    std::optional<NSError> error;
};

} // namespace vistrane
