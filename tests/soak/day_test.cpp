#include <chrono>
#include <cstdio>
#include <filesystem>

#include <gmock/gmock.h>

#include "tests/soak/SteppedSession.h"
#include "tests/support/Soak.h"
#include "tests/support/WorkFolder.h"
#include "tests/support/process_facts.h"

namespace vistrane {
namespace {

/// A day of capturing, as fast as the machine can. The demo camera gives thirty pictures a second;
/// each still is a new picture, but several requests share one. A frame's name is the second, so a
/// still replaces those of the same second: the folder has one frame for each second of the test.
class Day : public testing::Test {
protected:
    /// Requests that many stills, a few at a time, and browses meanwhile.
    void capture(int stills) {
        constexpr int together = 8;
        const int end = requested + stills;
        while (requested < end) {
            for (int i = 0; i < together && requested < end; ++i) {
                session.controller.addFrameClick(nullptr);
                ++requested;
            }
            session.runUntil([this] { return session.saved + session.lost >= requested; });
            browse();
        }
    }

    /// Moves to another frame and, from time to time, starts or stops playing.
    void browse() {
        ++moves;
        const auto frames = session.controller.pictureArray.load();
        if (frames && !frames->empty()) {
            session.controller.photoSlider->setIntegerValue(moves * 7 %
                                                            static_cast<int>(frames->size()));
            session.controller.sliderDisplaying(nullptr);
            draw((*frames)[static_cast<std::size_t>(moves * 7) % frames->size()]);
        }
        if (moves % 25 == 0) {
            session.controller.playPictures(nullptr);
        }
    }

    /// As the window's view does; the command line shows no pictures.
    void draw(const std::string& path) {
        const auto image = session.appKit.imageWithContentsOfFile(path);
        if (CVPixelBufferRef pixels = session.controller.fastImageFromNSImage(image)) {
            session.backend.coreVideo.CVBufferRelease(pixels);
        }
    }

    /// Runs the loop for a moment, in which the threads of the last movie can end.
    void rest() {
        const StopWatch watch;
        session.runUntil([&] { return watch.milliseconds() > 300; });
    }

    const WorkFolder work;
    SteppedSession& session = *new SteppedSession(work.path());
    int requested = 0;
    int moves = 0;
};

TEST_F(Day, OfStillsBrowsingAndMoviesTakesNoMemoryDescriptorsOrThreads) {
    const int stillsARound = Soak::isLong() ? 500 : 60;
    std::vector<double> stills;
    std::vector<double> memory;
    std::ptrdiff_t filesBefore = 0;
    std::ptrdiff_t threadsBefore = 0;
    Soak soak("a day: stills, browsing, movies", {.few = 3, .many = 100});
    while (soak.next()) {
        capture(stillsARound / 2);
        // The first movie needs two frames, which have different seconds.
        session.runUntil([this] {
            const auto frames = session.controller.pictureArray.load();
            return frames && frames->size() >= 2;
        });
        session.startCompile();
        capture(stillsARound / 2);
        const MovieOutcome movie = session.awaitMovie();
        EXPECT_FALSE(movie.error) << movie.error->localizedDescription;
        EXPECT_TRUE(std::filesystem::remove(movie.movie.path)) << movie.movie.path;

        rest();
        // After a warm-up of a fifth. The program is at rest: what remains is what the round
        // leaves.
        if (soak.round() > soak.count() / 5) {
            stills.push_back(session.saved);
            memory.push_back(residentBytes());
        }
        if (soak.round() == soak.count() / 5 + 1) {
            filesBefore = countOf(openFiles);
            threadsBefore = countOf(threads);
        }
    }
    // A machine that is busy for seconds loses stills to their timeout.
    EXPECT_EQ(session.saved + session.lost, soak.count() * stillsARound);
    EXPECT_GT(session.saved, session.lost);
    const StopWatch watch;
    session.runUntil([&] {
        return (countOf(openFiles) <= filesBefore && countOf(threads) <= threadsBefore) ||
               watch.milliseconds() > 20'000;
    });
    const auto files = countOf(openFiles);
    const auto threadsNow = countOf(threads);
    EXPECT_LE(files, filesBefore);
    EXPECT_LE(threadsNow, threadsBefore);

    ASSERT_FALSE(memory.empty());
    const double bytes = slope(stills, memory);
    char reached[200];
    std::snprintf(
        reached, sizeof reached,
        "%d stills, %d lost, %d movies: %.0f bytes a still, %.1f MB at the end; descriptors %td, "
        "then %td; threads %td, then %td",
        session.saved, session.lost, soak.round(), bytes, memory.back() / 1e6, filesBefore, files,
        threadsBefore, threadsNow);
    soak.report(reached, bytes < 100 && session.lost == 0 && !HasFailure());
}

} // namespace
} // namespace vistrane
