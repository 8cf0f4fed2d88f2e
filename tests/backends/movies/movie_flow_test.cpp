#include <atomic>
#include <condition_variable>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <mutex>
#include <sys/resource.h>

#include "backends/movies/MovieFile.h"
#include "backends/movies/MovieJob.h"
#include "backends/movies/MovieJobs.h"
#include "backends/movies/MovieWriter.h"
#include "tests/backends/movies/MovieTestKit.h"
#include "tests/backends/movies/QuickTimeBoxes.h"

namespace vistrane {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class MovieFlow : public testing::Test {
protected:
    TestFolder folder;
    RecordingObserver observer;
    Movies movies{observer};
    const std::string path = folder / "m.mov";
};

TEST_F(MovieFlow, ANullBufferIsRefusedAndTheMovieGoesOn) {
    OpenMovie movie(movies, path, 64, 48);
    EXPECT_EQ(movie.writer->error(), std::nullopt);
    EXPECT_TRUE(movie.append(scene(64, 48, 0), kCMTimeZero));
    EXPECT_FALSE(movie.append(nullptr, frameTime(1, 25)));
    EXPECT_THAT(movie.writer->error()->localizedDescription, HasSubstr("There is no picture"));
    EXPECT_TRUE(movie.append(scene(64, 48, 2), frameTime(2, 25)));
    movie.finish();
    EXPECT_EQ(observer.outcome(path), std::nullopt);
    EXPECT_EQ(observer.appended(), 2);
    EXPECT_THAT(observer.refusals(), SizeIs(1));
    EXPECT_THAT(shownTimes(path), testing::ElementsAre(0, 3));
}

TEST_F(MovieFlow, ADamagedBufferIsRefusedWithItsDamage) {
    OpenMovie movie(movies, path, 64, 48);
    const NSError damage{"NSCocoaErrorDomain", 259, "The picture ends in its middle"};
    const BufferPointer buffer = scene(64, 48, 0);
    buffer->markDamaged(damage);
    EXPECT_FALSE(movie.append(buffer, kCMTimeZero));
    EXPECT_EQ(movie.writer->error(), damage);
    EXPECT_TRUE(movie.append(scene(64, 48, 1), frameTime(1, 25)));
    movie.finish();
    EXPECT_EQ(observer.outcome(path), std::nullopt);
    EXPECT_THAT(observer.refusals(), testing::ElementsAre(damage));
}

TEST_F(MovieFlow, TheHandlerIsCalledOnceBeforeTheObserverAndThoseWhoAsked) {
    OpenMovie movie(movies, path, 64, 48);
    movie.append(scene(64, 48, 0), kCMTimeZero);
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<std::string> calls;
    const auto record = [&](const std::string& call) {
        const std::lock_guard lock(mutex);
        calls.push_back(call + (observer.hasOutcome(path) ? " after" : " before"));
        changed.notify_all();
    };
    const auto asked = [&](const std::optional<NSError>& error) {
        record(error ? "failed" : "whole");
    };
    EXPECT_TRUE(movies.whenFinished(path, asked));
    EXPECT_TRUE(movies.whenFinished(path, asked));
    EXPECT_FALSE(movies.whenFinished(folder / "other.mov", asked));
    movie.finish([&] { record("handler"); });
    movie.writer->finishWritingWithCompletionHandler([&] { record("second handler"); });
    movie.writer.reset(); // the work goes on without it
    std::unique_lock lock(mutex);
    changed.wait(lock, [&] { return calls.size() == 3; });
    EXPECT_THAT(calls, testing::ElementsAre("handler before", "whole after", "whole after"));
    EXPECT_FALSE(movies.whenFinished(path, asked));
    EXPECT_TRUE(readBoxes(path));
}

TEST_F(MovieFlow, ThoseWhoAskedLearnOfAFailure) {
    std::optional<NSError> told;
    {
        OpenMovie movie(movies, path, 1 << 20, 48); // refused: so nothing runs on another thread
        EXPECT_TRUE(movies.whenFinished(path, [&](auto error) { told = error; }));
        movie.finish();
    }
    ASSERT_TRUE(told);
    EXPECT_THAT(told->localizedDescription, HasSubstr("limit"));
}

TEST_F(MovieFlow, AppendsBeforeTheStartAndAfterTheEndAreRefused) {
    auto writer =
        movies.assetWriterWithURL(NSURL::fileURLWithPath(path), AVFileTypeQuickTimeMovie).writer;
    auto input = movies.assetWriterInputWithMediaType(AVMediaTypeVideo, trackSettings(64, 48));
    auto adaptor = movies.assetWriterInputPixelBufferAdaptorWithAssetWriterInput(input, {});
    const BufferPointer picture = scene(64, 48, 0);
    EXPECT_FALSE(adaptor->appendPixelBuffer(picture.get(), kCMTimeZero));
    writer->addInput(input);
    EXPECT_FALSE(adaptor->appendPixelBuffer(picture.get(), kCMTimeZero));
    EXPECT_EQ(adaptor->pixelBufferPool(), nullptr);
    EXPECT_TRUE(writer->startWriting());
    EXPECT_NE(adaptor->pixelBufferPool(), nullptr);
    EXPECT_TRUE(adaptor->appendPixelBuffer(picture.get(), kCMTimeZero));
    input->markAsFinished();
    EXPECT_FALSE(adaptor->appendPixelBuffer(picture.get(), CMTimeMake(1, 25)));
    writer->finishWritingWithCompletionHandler([] {});
    EXPECT_FALSE(adaptor->appendPixelBuffer(picture.get(), CMTimeMake(1, 25)));
    EXPECT_EQ(observer.outcome(path), std::nullopt);
}

TEST_F(MovieFlow, ATrackOfAnotherKindIsRefused) {
    auto writer =
        movies.assetWriterWithURL(NSURL::fileURLWithPath(path), AVFileTypeQuickTimeMovie).writer;
    writer->addInput(movies.assetWriterInputWithMediaType(AVMediaTypeAudio, {}));
    EXPECT_FALSE(writer->startWriting());
    EXPECT_TRUE(writer->error());
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST_F(MovieFlow, AWriterWithoutATrackFailsAtItsFinish) {
    auto writer =
        movies.assetWriterWithURL(NSURL::fileURLWithPath(path), AVFileTypeQuickTimeMovie).writer;
    EXPECT_FALSE(writer->startWriting());
    bool isCalled = false;
    writer->finishWritingWithCompletionHandler([&] { isCalled = true; });
    EXPECT_TRUE(isCalled);
    EXPECT_TRUE(observer.outcome(path));
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST_F(MovieFlow, AnUnusablePresetFailsTheMovieWithTheReason) {
    MovieOptions options;
    options.preset = "no-such-preset";
    Movies odd(observer, options);
    OpenMovie movie(odd, path, 64, 48);
    for (int i = 0; i < 10; ++i) {
        movie.append(scene(64, 48, i), frameTime(i, 25));
    }
    movie.finish();
    EXPECT_THAT(observer.outcome(path)->localizedDescription, HasSubstr("cannot be set up"));
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST_F(MovieFlow, TheInputAnswersNoWhileItsQueueIsFull) {
    const auto jobs = std::make_shared<MovieJobs>(observer);
    const auto job =
        std::make_shared<MovieJob>(path, MovieFile::create(path).file, MovieOptions(), jobs);
    jobs->add(path, job);
    const auto input = std::make_shared<MovieInput>(AVMediaTypeVideo, trackSettings(64, 48));
    MovieAdaptor adaptor(input);
    ASSERT_FALSE(input->attach(job));
    // Begun without the encoder's thread: nobody takes pictures out of the queue.
    input->track()->begin();
    input->track()->startSession(kCMTimeZero);
    int taken = 0;
    for (; taken < 100 && input->isReadyForMoreMediaData(); ++taken) {
        ASSERT_TRUE(adaptor.appendPixelBuffer(scene(64, 48, taken).get(), frameTime(taken, 25)));
    }
    EXPECT_LT(taken, 100);
    EXPECT_FALSE(input->isReadyForMoreMediaData());
    ASSERT_TRUE(job->start());
    while (!input->isReadyForMoreMediaData()) {
    }
    EXPECT_TRUE(adaptor.appendPixelBuffer(scene(64, 48, taken).get(), frameTime(taken, 25)));
    input->track()->finish([] {});
    EXPECT_EQ(observer.outcome(path), std::nullopt);
    EXPECT_THAT(shownTimes(path), SizeIs(static_cast<std::size_t>(taken) + 1));
}

TEST_F(MovieFlow, ThePicturesThatWaitStayFew) {
    constexpr std::size_t width = 480;
    constexpr std::size_t height = 360;
    OpenMovie movie(movies, path, width, height);
    const BufferPointer pictures[] = {noise(width, height, 1), noise(width, height, 2)};
    const auto peakKilobytes = [] {
        struct rusage usage {};
        ::getrusage(RUSAGE_SELF, &usage);
        return usage.ru_maxrss;
    };
    long peakOfTheStart = 0;
    for (int i = 0; i < 200; ++i) {
        while (!movie.input->isReadyForMoreMediaData()) {
        }
        ASSERT_TRUE(movie.append(pictures[i % 2], frameTime(i, 25)));
        if (i == 50) {
            peakOfTheStart = peakKilobytes();
        }
    }
    // 150 waiting pictures would be 39 megabytes.
    EXPECT_LT(peakKilobytes() - peakOfTheStart, 15 * 1024);
    movie.finish();
    EXPECT_EQ(observer.outcome(path), std::nullopt);
    EXPECT_THAT(readBoxes(path)->sampleSizes, SizeIs(200));
}

TEST_F(MovieFlow, TwoMoviesAreWrittenAtTheSameTime) {
    OpenMovie first(movies, path, 64, 48);
    OpenMovie second(movies, folder / "n.mov", 48, 64);
    for (int i = 0; i < 20; ++i) {
        EXPECT_TRUE(first.append(scene(64, 48, i), frameTime(i, 25)));
        EXPECT_TRUE(second.append(scene(48, 64, i), frameTime(i, 10)));
    }
    first.finish();
    second.finish();
    EXPECT_EQ(observer.outcome(path), std::nullopt);
    EXPECT_EQ(observer.outcome(folder / "n.mov"), std::nullopt);
    EXPECT_EQ(readBoxes(path)->movieDuration, 21U);
    EXPECT_EQ(readBoxes(folder / "n.mov")->movieTimescale, 10U);
}

TEST(MovieEnd, NothingIsCalledAfterMoviesHasGoneAway) {
    const TestFolder folder;
    const std::string path = folder / "m.mov";
    std::atomic<bool> isGone = false;
    std::atomic<bool> wasCalledLate = false;
    std::unique_ptr<OpenMovie> movie;
    {
        RecordingObserver observer;
        auto movies = std::make_unique<Movies>(observer);
        movie = std::make_unique<OpenMovie>(*movies, path, 320, 240);
        for (int i = 0; i < 10; ++i) {
            movie->append(noise(320, 240, static_cast<std::uint32_t>(i)), frameTime(i, 25));
        }
        movies->whenFinished(path, [&](const auto&) { wasCalledLate = isGone.load(); });
        movie->finish([&] { wasCalledLate = isGone.load(); });
        movies.reset();
        isGone = true;
    }
    EXPECT_FALSE(movie->append(noise(320, 240, 0), CMTimeMake(99, 25)));
    movie.reset();
    EXPECT_FALSE(wasCalledLate);
    for (const std::string& name : folder.names()) {
        EXPECT_EQ(name, "m.mov"); // it was finished just in time, or is gone
    }
}

} // namespace
} // namespace vistrane
