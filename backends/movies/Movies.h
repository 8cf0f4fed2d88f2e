#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "backends/movies/MovieObserver.h"
#include "backends/movies/MovieOptions.h"
#include "platform/avfoundation/AVAssetWriter.h"
#include "platform/foundation/NSURL.h"

namespace vistrane {

class MovieJobs;

/// The movie half of the AVFoundation kit: H.264 in QuickTime files. Any thread.
///
/// Pixel buffers are those of `MediaCoreVideo`. An unfinished movie is a hidden file in the movie's
/// folder (".<name>.vistrane-part"). It is removed if the movie is cancelled or fails before it is
/// complete; after a crash, the next writer in that folder removes it, or publishes it if it is
/// complete.
///
/// The destructor cancels every unfinished movie. It waits only for calls of handlers and of the
/// observer that are in progress; no call begins afterwards. It must not run within one.
class Movies {
public:
    /// Its argument is nothing for a complete movie, otherwise the reason.
    using Finished = std::function<void(std::optional<NSError>)>;

    explicit Movies(MovieObserver& observer, MovieOptions options = {});
    ~Movies();
    Movies(const Movies&) = delete;
    Movies& operator=(const Movies&) = delete;

    /// The first call loads the encoder module. Fails if anything of that name exists or is being
    /// written, if the folder is missing or not writable, or if there is no H.264 encoder.
    AVAssetWriterResult assetWriterWithURL(const NSURL& url, AVFileType fileType);

    /// The settings' width and height are the track's exact size, even if they are odd. A track of
    /// size zero takes the size of the first picture that can be appended.
    std::shared_ptr<AVAssetWriterInput>
    assetWriterInputWithMediaType(AVMediaType mediaType, const NSDictionary& outputSettings);

    /// The attributes are ignored: they describe the buffers of the pool, which has none.
    std::shared_ptr<AVAssetWriterInputPixelBufferAdaptor>
    assetWriterInputPixelBufferAdaptorWithAssetWriterInput(
        std::shared_ptr<AVAssetWriterInput> input, const NSDictionary& attributes);

    /// Calls `callback` once, on any thread and after the observer, when the movie that is being
    /// written at `path` is complete or has failed. Returns false, and never calls it, if no movie
    /// is being written there.
    bool whenFinished(const std::string& path, Finished callback);

    /// For a process that is about to end: refuses new writers, cancels every movie whose finishing
    /// was not requested, removing its hidden file, and waits for the others until they are
    /// complete or have failed, with their outcome reported. `timeout` limits the wait; then they
    /// are cancelled too.
    void end(std::optional<std::chrono::milliseconds> timeout);

private:
    MovieOptions options_;
    std::shared_ptr<MovieJobs> jobs_;
};

} // namespace vistrane
