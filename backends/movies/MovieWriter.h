#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "backends/movies/MovieTrackWriter.h"
#include "backends/pictures/PixelBuffer.h"
#include "platform/avfoundation/AVAssetWriter.h"

namespace vistrane {

/// A video track. It accepts pictures once it is added to a `MovieWriter` that has started.
class MovieInput final : public AVAssetWriterInput {
public:
    MovieInput(AVMediaType mediaType, const NSDictionary& outputSettings);

    /// Has no effect: pictures are never dropped.
    void setExpectsMediaDataInRealTime(bool) override {}
    bool isReadyForMoreMediaData() override;
    void markAsFinished() override;

    /// Creates the track. Returns the reason if that fails.
    std::optional<NSError> attach(std::shared_ptr<MovieJob> job);

    /// Null before `attach`.
    MovieTrackWriter* track() { return track_.get(); }

private:
    std::optional<NSError> settingsError() const;

    const bool isVideo_;
    std::string codec_;
    std::string scalingMode_;
    std::int64_t width_ = 0;
    std::int64_t height_ = 0;
    std::unique_ptr<MovieTrackWriter> track_;
};

class MovieAdaptor final : public AVAssetWriterInputPixelBufferAdaptor {
public:
    explicit MovieAdaptor(std::shared_ptr<AVAssetWriterInput> input);

    AVAssetWriterInput& assetWriterInput() override { return *input_; }
    bool appendPixelBuffer(CVPixelBufferRef buffer, CMTime time) override;
    CVPixelBufferPoolRef pixelBufferPool() override;

private:
    MovieTrackWriter* track();

    std::shared_ptr<AVAssetWriterInput> input_;
    PixelBufferPool pool_;
};

class MovieWriter final : public AVAssetWriter {
public:
    explicit MovieWriter(std::shared_ptr<MovieJob> job) : job_(std::move(job)) {}
    ~MovieWriter() override;

    void addInput(std::shared_ptr<AVAssetWriterInput> input) override;
    bool startWriting() override;
    void startSessionAtSourceTime(CMTime time) override;
    std::optional<NSError> error() const override;
    void finishWritingWithCompletionHandler(std::function<void()> handler) override;

private:
    std::shared_ptr<MovieJob> job_;
    std::shared_ptr<MovieInput> input_;
    bool isStarted_ = false;
    bool isFinishing_ = false;
};

} // namespace vistrane
