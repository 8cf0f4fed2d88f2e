#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "platform/avfoundation/AVAssetWriter.h"
#include "platform/corevideo/CoreVideo.h"
#include "platform/foundation/NSURL.h"
#include "tests/contract/contract.h"

namespace vistrane {

/// Movie writers. A backend has
///
///     auto& movies();                              an AVFoundation, or its movie half
///     CoreVideo& coreVideo();
///     std::string emptyFolder();                   a fresh folder's path
///     void addFile(const std::string& path);
///     bool exists(const std::string& path);
///     void awaitEnd(const std::string& path);      for a movie that was asked to finish: waits
///                                                  until its handler has returned
template <typename Backend>
class AssetWriterContract : public ::testing::Test {
protected:
    static constexpr std::size_t width = 64;
    static constexpr std::size_t height = 48;

    /// The time of that frame at 25 frames a second.
    static CMTime frame(std::int64_t number) { return CMTimeMake(number, 25); }

    AVAssetWriterResult make() {
        return backend_.movies().assetWriterWithURL(NSURL::fileURLWithPath(path_),
                                                    AVFileTypeQuickTimeMovie);
    }

    /// A writer with its track, not started.
    void open() {
        AVAssetWriterResult result = make();
        ASSERT_FALSE(result.error) << result.error->localizedDescription;
        writer_ = std::move(result.writer);
        input_ = backend_.movies().assetWriterInputWithMediaType(
            AVMediaTypeVideo, {{AVVideoCodecKey, std::string(AVVideoCodecTypeH264)},
                               {AVVideoScalingModeKey, std::string(AVVideoScalingModeResizeAspect)},
                               {AVVideoWidthKey, std::int64_t{width}},
                               {AVVideoHeightKey, std::int64_t{height}}});
        adaptor_ =
            backend_.movies().assetWriterInputPixelBufferAdaptorWithAssetWriterInput(input_, {});
        writer_->addInput(input_);
        input_->setExpectsMediaDataInRealTime(true);
    }

    void start() {
        open();
        ASSERT_TRUE(writer_);
        ASSERT_TRUE(writer_->startWriting());
        writer_->startSessionAtSourceTime(kCMTimeZero);
    }

    /// Appends a picture as the buffer is made, and releases it at once.
    bool append(CMTime time) {
        CoreVideo& video = backend_.coreVideo();
        CVPixelBufferRef buffer = nullptr;
        EXPECT_EQ(video.CVPixelBufferCreate(width, height, kCVPixelFormatType_32ARGB, {}, &buffer),
                  kCVReturnSuccess);
        const bool taken = adaptor_->appendPixelBuffer(buffer, time);
        video.CVBufferRelease(buffer);
        return taken;
    }

    void finish() {
        input_->markAsFinished();
        writer_->finishWritingWithCompletionHandler([this] { ++handlerCalls_; });
    }
    void finishAndWait() {
        finish();
        backend_.awaitEnd(path_);
    }

    /// Outlives the backend, which may call the handler until it is destroyed.
    std::atomic<int> handlerCalls_{0};
    Backend backend_;
    std::string path_ = backend_.emptyFolder() + "/movie.mov";
    std::shared_ptr<AVAssetWriter> writer_;
    std::shared_ptr<AVAssetWriterInput> input_;
    std::shared_ptr<AVAssetWriterInputPixelBufferAdaptor> adaptor_;
};

TYPED_TEST_SUITE_P(AssetWriterContract);

TYPED_TEST_P(AssetWriterContract, AFreeNameGivesAWriterAndATakenOneAnError) {
    const AVAssetWriterResult result = this->make();
    EXPECT_FALSE(result.error);
    ASSERT_TRUE(result.writer);
    EXPECT_FALSE(result.writer->error());
    EXPECT_FALSE(result.writer->startWriting()); // It has no track.
    this->backend_.addFile(this->path_);
    const AVAssetWriterResult other = this->make();
    ASSERT_TRUE(other.error);
    EXPECT_FALSE(other.error->localizedDescription.empty());
}

TYPED_TEST_P(AssetWriterContract, ACleanRunLeavesAMovieAndNoError) {
    ASSERT_NO_FATAL_FAILURE(this->start());
    for (int number = 0; number < 5; ++number) {
        EXPECT_TRUE(this->append(this->frame(number)));
    }
    EXPECT_FALSE(this->backend_.exists(this->path_));
    EXPECT_EQ(this->handlerCalls_, 0);
    this->finishAndWait();
    EXPECT_EQ(this->handlerCalls_, 1);
    EXPECT_FALSE(this->writer_->error());
    EXPECT_TRUE(this->backend_.exists(this->path_));
}

TYPED_TEST_P(AssetWriterContract, ThePoolComesWithTheStart) {
    ASSERT_NO_FATAL_FAILURE(this->open());
    EXPECT_EQ(&this->adaptor_->assetWriterInput(), this->input_.get());
    EXPECT_EQ(this->adaptor_->pixelBufferPool(), nullptr);
    ASSERT_TRUE(this->writer_->startWriting());
    EXPECT_NE(this->adaptor_->pixelBufferPool(), nullptr);
}

TYPED_TEST_P(AssetWriterContract, ANullBufferIsRefusedAndTheWriterGoesOn) {
    ASSERT_NO_FATAL_FAILURE(this->start());
    EXPECT_TRUE(this->append(this->frame(0)));
    EXPECT_FALSE(this->writer_->error());
    EXPECT_FALSE(this->adaptor_->appendPixelBuffer(nullptr, this->frame(1)));
    ASSERT_TRUE(this->writer_->error());
    EXPECT_FALSE(this->writer_->error()->localizedDescription.empty());
    EXPECT_TRUE(this->append(this->frame(2)));
    this->finishAndWait();
    EXPECT_TRUE(this->backend_.exists(this->path_));
}

TYPED_TEST_P(AssetWriterContract, ATimeThatDoesNotRiseOrIsInvalidIsRefusedAndTheWriterGoesOn) {
    ASSERT_NO_FATAL_FAILURE(this->start());
    EXPECT_TRUE(this->append(this->frame(0)));
    EXPECT_TRUE(this->append(this->frame(3)));
    EXPECT_FALSE(this->writer_->error());
    EXPECT_FALSE(this->append(this->frame(3)));
    EXPECT_TRUE(this->writer_->error());
    EXPECT_FALSE(this->append(this->frame(2)));
    EXPECT_FALSE(this->append(CMTimeMake(6, 50))); // frame 3 on another scale
    EXPECT_FALSE(this->append(CMTimeMake(1, 0)));
    EXPECT_TRUE(this->append(this->frame(4)));
    this->finishAndWait();
    EXPECT_TRUE(this->backend_.exists(this->path_));
}

TYPED_TEST_P(AssetWriterContract, NothingIsTakenBeforeTheStart) {
    ASSERT_NO_FATAL_FAILURE(this->open());
    EXPECT_FALSE(this->append(this->frame(0)));
    EXPECT_TRUE(this->writer_->error());
}

TYPED_TEST_P(AssetWriterContract, NothingIsTakenAfterTheTrackHasEnded) {
    ASSERT_NO_FATAL_FAILURE(this->start());
    EXPECT_TRUE(this->append(this->frame(0)));
    this->input_->markAsFinished();
    EXPECT_FALSE(this->append(this->frame(1)));
    EXPECT_TRUE(this->writer_->error());
}

TYPED_TEST_P(AssetWriterContract, TheHandlerIsCalledOnceWithoutTheWriter) {
    ASSERT_NO_FATAL_FAILURE(this->start());
    EXPECT_TRUE(this->append(this->frame(0)));
    this->finish();
    this->adaptor_.reset();
    this->input_.reset();
    this->writer_.reset();
    this->backend_.awaitEnd(this->path_);
    EXPECT_EQ(this->handlerCalls_, 1);
    EXPECT_TRUE(this->backend_.exists(this->path_));
}

TYPED_TEST_P(AssetWriterContract, ANameTakenDuringTheWritingGivesAnErrorAtTheEnd) {
    ASSERT_NO_FATAL_FAILURE(this->start());
    EXPECT_TRUE(this->append(this->frame(0)));
    this->backend_.addFile(this->path_);
    this->finishAndWait();
    EXPECT_TRUE(this->writer_->error());
    EXPECT_EQ(this->handlerCalls_, 1);
}

TYPED_TEST_P(AssetWriterContract, AWriterDestroyedUnfinishedLeavesTheNameFree) {
    ASSERT_NO_FATAL_FAILURE(this->start());
    EXPECT_TRUE(this->append(this->frame(0)));
    this->adaptor_.reset();
    this->input_.reset();
    this->writer_.reset();
    EXPECT_FALSE(this->backend_.exists(this->path_));
    EXPECT_FALSE(this->make().error);
}

REGISTER_TYPED_TEST_SUITE_P(AssetWriterContract, AFreeNameGivesAWriterAndATakenOneAnError,
                            ACleanRunLeavesAMovieAndNoError, ThePoolComesWithTheStart,
                            ANullBufferIsRefusedAndTheWriterGoesOn,
                            ATimeThatDoesNotRiseOrIsInvalidIsRefusedAndTheWriterGoesOn,
                            NothingIsTakenBeforeTheStart, NothingIsTakenAfterTheTrackHasEnded,
                            TheHandlerIsCalledOnceWithoutTheWriter,
                            ANameTakenDuringTheWritingGivesAnErrorAtTheEnd,
                            AWriterDestroyedUnfinishedLeavesTheNameFree);

} // namespace vistrane
