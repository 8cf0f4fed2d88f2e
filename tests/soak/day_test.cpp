#include <chrono>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <thread>

#include <gmock/gmock.h>

#include "tests/soak/SteppedSession.h"
#include "tests/support/Soak.h"
#include "tests/support/WorkFolder.h"

namespace vistrane {
namespace {

/// What a process must not have more of at the end of a day.
struct Resources {
    std::ptrdiff_t descriptors = 0;
    std::ptrdiff_t threads = 0;
};

std::ptrdiff_t entriesOf(const char* folder) {
    return std::distance(std::filesystem::directory_iterator(folder),
                         std::filesystem::directory_iterator());
}

Resources resources() {
    return {entriesOf("/proc/self/fd"), entriesOf("/proc/self/task")};
}

/// A day of capturing, as fast as the machine can. The demo camera gives thirty pictures a second;
/// each still is a new picture, but several requests share one. A frame's name is the second, so a
/// still replaces those of the same second: the folder has one frame for each second of the test.
class Day : public testing::Test {
protected:
    Day() {
        session.observer.frameWasSaved = [this](const std::string&) { ++saved; };
        session.observer.frameCouldNotBeSaved = [this] { ++lost; };
    }

    /// Requests that many stills, a few at a time, and browses meanwhile.
    void capture(int stills) {
        constexpr int together = 8;
        const int end = requested + stills;
        while (requested < end) {
            for (int i = 0; i < together && requested < end; ++i) {
                session.controller.addFrameClick(nullptr);
                ++requested;
            }
            session.runUntil([this] { return saved + lost >= requested; });
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

    /// Runs the loop for a time in which the threads of the last movie can end.
    void rest(std::chrono::milliseconds time) {
        const auto end = std::chrono::steady_clock::now() + time;
        session.runUntil([end] { return std::chrono::steady_clock::now() > end; });
    }

    const WorkFolder work;
    SteppedSession& session = *new SteppedSession(work.path());
    int requested = 0;
    int saved = 0;
    int lost = 0;
    int moves = 0;
};

TEST_F(Day, OfStillsBrowsingAndMoviesTakesNoMemoryDescriptorsOrThreads) {
    const int stillsARound = Soak::isLong() ? 500 : 60;
    std::vector<double> stills;
    std::vector<double> memory;
    Resources atFirst;
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
        EXPECT_TRUE(std::filesystem::remove(movie.path)) << movie.path;

        // After a warm-up of a fifth.
        if (soak.round() * 5 > soak.count()) {
            stills.push_back(saved);
            memory.push_back(residentBytes());
        }
        if (soak.round() == soak.count() / 5 + 1) {
            rest(std::chrono::milliseconds(500));
            atFirst = resources();
        }
    }
    EXPECT_EQ(lost, 0);
    EXPECT_EQ(saved, soak.count() * stillsARound);
    rest(std::chrono::milliseconds(500));
    const Resources atLast = resources();
    EXPECT_LE(atLast.descriptors, atFirst.descriptors);
    EXPECT_LE(atLast.threads, atFirst.threads);

    const double bytes = slope(stills, memory);
    char reached[200];
    std::snprintf(reached, sizeof reached,
                  "%d stills, %d movies: %.0f bytes a still, %.1f MB at the end; descriptors %td, "
                  "then %td; threads %td, then %td",
                  saved, soak.round(), bytes, memory.back() / 1e6, atFirst.descriptors,
                  atLast.descriptors, atFirst.threads, atLast.threads);
    soak.report(reached, bytes < 100 && !HasFailure());
}

} // namespace
} // namespace vistrane
