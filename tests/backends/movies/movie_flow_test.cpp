#include <atomic>
#include <condition_variable>
#include <mutex>

#include "backends/movies/MovieFile.h"
#include "backends/movies/MovieJob.h"
#include "backends/movies/MovieJobs.h"
#include "backends/movies/MovieWriter.h"
#include "backends/movies/encoder_module.h"
#include "tests/backends/movies/MovieTest.h"
#include "tests/support/movie_boxes.h"
#include "tests/support/movie_facts.h"

namespace vistrane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

using MovieFlow = MovieTest;

TEST_F(MovieFlow, RefusedPicturesAreReportedAndTheMovieGoesOn) {
    OpenMovie movie = open();
    EXPECT_TRUE(movie.append(scene(64, 48, 0), kCMTimeZero));
    EXPECT_EQ(movie.writer->error(), std::nullopt);
    EXPECT_FALSE(movie.append(nullptr, frameTime(1)));
    const auto missing = movie.writer->error();
    ASSERT_TRUE(missing);
    EXPECT_THAT(missing->localizedDescription, HasSubstr("There is no picture"));
    const NSError damage{"NSCocoaErrorDomain", 259, "The picture ends in its middle"};
    const BufferPointer buffer = scene(64, 48, 2);
    buffer->markDamaged(damage);
    EXPECT_FALSE(movie.append(buffer, frameTime(2)));
    EXPECT_EQ(movie.writer->error(), damage);
    EXPECT_TRUE(movie.append(scene(64, 48, 3), frameTime(3)));
    finish(movie);
    EXPECT_FALSE(movie.append(scene(64, 48, 4), frameTime(4)));
    EXPECT_EQ(observer.appended(), 2);
    EXPECT_THAT(observer.refusals(), ElementsAre(*missing, damage, testing::_));
}

TEST_F(MovieFlow, TheHandlerIsCalledOnceThenTheObserverThenTheCallbacks) {
    OpenMovie movie = open();
    movie.appendFrames(1);
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
    EXPECT_THAT(calls, ElementsAre("handler before", "whole after", "whole after"));
    EXPECT_FALSE(movies.whenFinished(path, asked));
    EXPECT_FALSE(boxesOf(path).empty());
}

TEST_F(MovieFlow, ATrackOfAnotherKindIsRefused) {
    auto writer = create(path).writer;
    writer->addInput(movies.assetWriterInputWithMediaType(AVMediaTypeAudio, {}));
    EXPECT_FALSE(writer->startWriting());
    EXPECT_TRUE(writer->error());
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST_F(MovieFlow, AWriterWithoutATrackFailsAtItsFinish) {
    auto writer = create(path).writer;
    auto input = movies.assetWriterInputWithMediaType(AVMediaTypeVideo, trackSettings(64, 48));
    auto adaptor = movies.assetWriterInputPixelBufferAdaptorWithAssetWriterInput(input, {});
    EXPECT_FALSE(adaptor->appendPixelBuffer(scene(64, 48, 0).get(), kCMTimeZero));
    EXPECT_EQ(adaptor->pixelBufferPool(), nullptr);
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
    movie.appendFrames(10);
    movie.finish();
    EXPECT_THAT(observer.outcome(path)->localizedDescription, HasSubstr("cannot be set up"));
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST_F(MovieFlow, TheInputAnswersNoWhileItsQueueIsFull) {
    const auto jobs = std::make_shared<MovieJobs>(observer);
    const auto job = std::make_shared<MovieJob>(path, MovieFile::create(path).file,
                                                *encoderModule().module, MovieOptions(), jobs);
    jobs->add(path, job);
    const auto input = std::make_shared<MovieInput>(AVMediaTypeVideo, trackSettings(64, 48));
    MovieAdaptor adaptor(input);
    ASSERT_FALSE(input->attach(job));
    // Begun without the encoder's thread, so that the queue fills.
    input->track()->begin();
    input->track()->startSession(kCMTimeZero);
    int taken = 0;
    for (; taken < 10 && input->isReadyForMoreMediaData(); ++taken) {
        ASSERT_TRUE(adaptor.appendPixelBuffer(scene(64, 48, taken).get(), frameTime(taken)));
    }
    EXPECT_LT(taken, 10);
    EXPECT_FALSE(input->isReadyForMoreMediaData());
    ASSERT_TRUE(job->start());
    while (!input->isReadyForMoreMediaData()) {
    }
    EXPECT_TRUE(adaptor.appendPixelBuffer(scene(64, 48, taken).get(), frameTime(taken)));
    input->track()->finish([] {});
    EXPECT_EQ(observer.outcome(path), std::nullopt);
    EXPECT_THAT(movieFacts(path).times, SizeIs(static_cast<std::size_t>(taken) + 1));
}

TEST_F(MovieFlow, TwoMoviesAreWrittenAtTheSameTime) {
    OpenMovie first = open();
    OpenMovie second(movies, folder / "n.mov", 48, 64);
    for (int i = 0; i < 20; ++i) {
        EXPECT_TRUE(first.append(scene(64, 48, i), frameTime(i)));
        EXPECT_TRUE(second.append(scene(48, 64, i), frameTime(i, 10)));
    }
    finish(first);
    second.finish();
    EXPECT_EQ(observer.outcome(folder / "n.mov"), std::nullopt);
    EXPECT_EQ(movieFacts(path).duration, 21);
    EXPECT_EQ(movieFacts(folder / "n.mov").timeBase, "1/10");
}

TEST(MovieEnd, NothingIsCalledAfterMoviesIsDestroyed) {
    const WorkFolder folder;
    const std::string path = folder / "m.mov";
    std::atomic<bool> isGone = false;
    std::atomic<bool> wasCalledLate = false;
    std::unique_ptr<OpenMovie> movie;
    {
        RecordingObserver observer;
        auto movies = std::make_unique<Movies>(observer);
        movie = std::make_unique<OpenMovie>(*movies, path, 320, 240);
        movie->appendFrames(10, noise);
        movies->whenFinished(path, [&](const auto&) { wasCalledLate = isGone.load(); });
        movie->finish([&] { wasCalledLate = isGone.load(); });
        movies.reset();
        isGone = true;
    }
    EXPECT_FALSE(movie->append(noise(320, 240, 0), CMTimeMake(99, 25)));
    movie.reset();
    EXPECT_FALSE(wasCalledLate);
    for (const std::string& name : folder.names()) {
        EXPECT_EQ(name, "m.mov"); // it was finished just in time, or removed
    }
}

} // namespace
} // namespace vistrane
