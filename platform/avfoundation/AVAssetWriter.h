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

    /// May wait a bounded moment (a tenth of a second at most) for room, so that asking again and
    /// again costs no processor time.
    virtual bool isReadyForMoreMediaData() = 0;

    /// Nothing will be appended any more.
    virtual void markAsFinished() = 0;
};

/// Takes pixel buffers for a track. Its writer's thread only.
class AVAssetWriterInputPixelBufferAdaptor : public NSObject {
public:
    virtual AVAssetWriterInput& assetWriterInput() = 0;

    /// Adds a picture that is shown from `time` on. Times rise. A picture of another size than the
    /// track's is fitted in, aspect kept, centred on black. The buffer is only read, and may be
    /// released after the return. False when refused: without a buffer, with one that a damaged
    /// picture was drawn into, out of order, or after a failure; the writer's `error` says why.
    virtual bool appendPixelBuffer(CVPixelBufferRef buffer, CMTime time) = 0;

    /// Null before writing has started.
    virtual CVPixelBufferPoolRef pixelBufferPool() = 0;
};

/// Writes one movie file. One thread, except where a line says more.
///
/// Under the movie's name there is a whole movie or nothing: it appears when it is finished, and
/// never replaces a file. A writer that goes away unfinished leaves nothing behind.
class AVAssetWriter : public NSObject {
public:
    virtual void addInput(std::shared_ptr<AVAssetWriterInput> input) = 0;
    virtual bool startWriting() = 0;
    virtual void startSessionAtSourceTime(CMTime time) = 0;

    /// The reason of the last refusal or failure; nothing when all went well.
    virtual std::optional<NSError> error() const = 0;

    /// Returns at once. `handler` is called once, on any thread, when the file is whole or has
    /// failed. The work goes on when the caller lets the writer go.
    virtual void finishWritingWithCompletionHandler(std::function<void()> handler) = 0;
};

/// A writer, or why there is none. Only the error tells.
struct AVAssetWriterResult {
    std::shared_ptr<AVAssetWriter> writer;
    std::optional<NSError> error;
};

} // namespace vistrane
