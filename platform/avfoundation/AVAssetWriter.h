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

/// One track of a movie being written. Its writer's thread only.
class AVAssetWriterInput : public NSObject {
public:
    virtual void setExpectsMediaDataInRealTime(bool realTime) = 0;

    /// May wait for room, for a tenth of a second at most, so that a loop over it costs no
    /// processor time.
    virtual bool isReadyForMoreMediaData() = 0;

    /// No picture follows.
    virtual void markAsFinished() = 0;
};

/// Takes pixel buffers for a track. Its writer's thread only.
class AVAssetWriterInputPixelBufferAdaptor : public NSObject {
public:
    virtual AVAssetWriterInput& assetWriterInput() = 0;

    /// Adds a picture with the presentation time `time`. Times must rise. A picture of another size
    /// than the track's is fitted in with its aspect kept, centred on black. The buffer is only
    /// read, and may be released after the return. False when the picture is refused: no buffer, a
    /// buffer into which a damaged picture was drawn, a time out of order, or an earlier failure.
    /// The writer's `error` is the reason.
    virtual bool appendPixelBuffer(CVPixelBufferRef buffer, CMTime time) = 0;

    /// Null before writing has started.
    virtual CVPixelBufferPoolRef pixelBufferPool() = 0;
};

/// Writes one movie file. One thread.
///
/// Under the movie's name there is a complete movie or nothing: it appears when it is finished, and
/// never replaces a file. A writer that is destroyed unfinished leaves nothing behind.
class AVAssetWriter : public NSObject {
public:
    virtual void addInput(std::shared_ptr<AVAssetWriterInput> input) = 0;
    virtual bool startWriting() = 0;
    virtual void startSessionAtSourceTime(CMTime time) = 0;

    /// The reason of the failure, else of the last refusal; nothing when there was none.
    virtual std::optional<NSError> error() const = 0;

    /// Returns at once. `handler` is called once, on any thread, when the file is complete or has
    /// failed. The writer may be destroyed meanwhile.
    virtual void finishWritingWithCompletionHandler(std::function<void()> handler) = 0;
};

/// A writer, or why there is none. Creation has failed if and only if there is an error.
struct AVAssetWriterResult {
    std::shared_ptr<AVAssetWriter> writer;
    std::optional<NSError> error;
};

} // namespace vistrane
