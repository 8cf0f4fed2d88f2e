#include "backends/movies/Movies.h"

#include <utility>

#include "backends/movies/MovieFile.h"
#include "backends/movies/MovieJob.h"
#include "backends/movies/MovieJobs.h"
#include "backends/movies/MovieWriter.h"
#include "backends/movies/encoder_module.h"
#include "backends/movies/movie_errors.h"

namespace vistrane {

Movies::Movies(MovieObserver& observer, MovieOptions options)
    : options_(std::move(options)), jobs_(std::make_shared<MovieJobs>(observer)) {}

Movies::~Movies() {
    jobs_->close();
    jobs_->abandonAll();
}

AVAssetWriterResult Movies::assetWriterWithURL(const NSURL& url, AVFileType) {
    EncoderModuleResult encoder = encoderModule();
    if (!encoder.error) {
        encoder.error = encoder.module->availability();
    }
    if (encoder.error) {
        return {nullptr, std::move(encoder.error)};
    }
    const std::string path = options_.path.empty() ? url.path() : options_.path;
    const auto creation = jobs_->lockCreation();
    if (jobs_->isEnded()) {
        return {nullptr, movieError(AVErrorOperationCancelled,
                                    "The movie cannot be made: the program is ending")};
    }
    MovieFileResult result = MovieFile::create(path, options_.replaces);
    if (result.error) {
        return {nullptr, std::move(result.error)};
    }
    auto job =
        std::make_shared<MovieJob>(path, std::move(result.file), *encoder.module, options_, jobs_);
    jobs_->add(path, job);
    return {std::make_shared<MovieWriter>(std::move(job)), std::nullopt};
}

std::shared_ptr<AVAssetWriterInput>
Movies::assetWriterInputWithMediaType(AVMediaType mediaType, const NSDictionary& outputSettings) {
    return std::make_shared<MovieInput>(mediaType, outputSettings);
}

std::shared_ptr<AVAssetWriterInputPixelBufferAdaptor>
Movies::assetWriterInputPixelBufferAdaptorWithAssetWriterInput(
    std::shared_ptr<AVAssetWriterInput> input, const NSDictionary&) {
    return std::make_shared<MovieAdaptor>(std::move(input));
}

bool Movies::whenFinished(const std::string& path, Finished callback) {
    return jobs_->whenFinished(path, std::move(callback));
}

void Movies::end(std::optional<std::chrono::milliseconds> timeout) {
    jobs_->end(timeout);
}

} // namespace vistrane
