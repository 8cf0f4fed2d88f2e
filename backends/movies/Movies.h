#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "backends/movies/MovieOptions.h"
#include "backends/posix/MediaObserver.h"
#include "platform/avfoundation/AVAssetWriter.h"
#include "platform/foundation/NSURL.h"

namespace vistrane {

class MovieJobs;

/// The movie half of the AVFoundation kit: H.264 in QuickTime files. Any thread.
///
/// Pixel buffers are those of `MediaCoreVideo`. A movie on its way lies in a hidden file beside its
/// later name (".<name>.vistrane-part"), which is removed whenever the movie is not finished; when
/// the process dies, the next writer in that folder removes it.
///
/// Going away gives up every unfinished movie, and calls nothing any more, handlers included; it
/// waits for such calls that are under way and for nothing else. It is not done from within one.
class Movies {
public:
    /// `whenFinished` tells whether a movie is whole (no error).
    using Finished = std::function<void(std::optional<NSError>)>;

    explicit Movies(MediaObserver& observer, MovieOptions options = {});
    ~Movies();
    Movies(const Movies&) = delete;
    Movies& operator=(const Movies&) = delete;

    /// Fails when anything of that name exists or is being written, when the folder is missing or
    /// cannot be written, and when there is no H.264 encoder.
    AVAssetWriterResult assetWriterWithURL(const NSURL& url, AVFileType fileType);

    /// The settings' width and height are the track's exact size, odd ones too. A track without a
    /// size takes that of the first picture that can be appended.
    std::shared_ptr<AVAssetWriterInput>
    assetWriterInputWithMediaType(AVMediaType mediaType, const NSDictionary& outputSettings);

    /// The attributes are wishes for the pool, which keeps no buffers.
    std::shared_ptr<AVAssetWriterInputPixelBufferAdaptor>
    assetWriterInputPixelBufferAdaptorWithAssetWriterInput(
        std::shared_ptr<AVAssetWriterInput> input, const NSDictionary& attributes);

    /// Calls `callback` once, on any thread, when the movie that a writer holds at `path` is whole
    /// or has failed, after the observer. False, without a call, when no writer holds that path:
    /// what lies there is all there will be.
    bool whenFinished(const std::string& path, Finished callback);

    /// Removes every hidden file at once, for a process that is about to end. No unfinished movie
    /// gets its name afterwards, and no new writer is made. Waits for no thread that encodes.
    void abandonAll();

private:
    MovieOptions options_;
    std::shared_ptr<MovieJobs> jobs_;
};

} // namespace vistrane
