#include <chrono>
#include <cmath>

#include <gmock/gmock.h>

#include "tests/soak/SteppedSession.h"
#include "tests/support/Program.h"
#include "tests/support/Soak.h"
#include "tests/support/WorkFolder.h"

namespace vistrane {
namespace {

/// The schedule on the real clock, while every processor is busy.
TEST(ClockGrid, AStillASecondStaysOnTheGridWhileTheProcessorsAreBusy) {
    std::vector<std::unique_ptr<Program>> busy;
    for (unsigned i = 0; i < std::thread::hardware_concurrency(); ++i) {
        busy.push_back(
            std::make_unique<Program>(std::vector<std::string>{"sh", "-c", "while :; do :; done"},
                                      ProgramOptions{.timeout = std::chrono::minutes(20)}));
    }
    const WorkFolder work;
    auto& session = *new SteppedSession(work.path());

    // What the capture timer does, and when.
    Times deviations;
    int ticks = 0;
    const auto start = std::chrono::steady_clock::now();
    const auto timer = session.loop.scheduleTimer(
        1.0,
        [&](NSTimer&) {
            ++ticks;
            const std::chrono::duration<double, std::milli> late =
                std::chrono::steady_clock::now() - start - std::chrono::seconds(ticks);
            deviations.add(std::abs(late.count()));
            session.controller.addPhotoFrame();
        },
        true);

    Soak soak("a still a second, both processors busy", {.few = 4, .many = 300});
    while (soak.next()) {
        session.runUntil([&] { return ticks >= soak.round(); });
    }
    timer->invalidate();
    session.runUntil([&] { return session.saved + session.lost == ticks; });
    EXPECT_EQ(ticks, soak.count());
    EXPECT_GT(session.saved, session.lost);
    char reached[160];
    std::snprintf(reached, sizeof reached,
                  "%d stills, %.1f %% within 20 ms of the grid; half within %.1f ms, 99 %% within "
                  "%.1f ms, the worst %.1f ms",
                  session.saved, 100 * deviations.shareWithin(20), deviations.percentile(0.5),
                  deviations.percentile(0.99), deviations.worst());
    soak.report(reached, deviations.shareWithin(20) >= 0.99 && session.lost == 0);
}

} // namespace
} // namespace vistrane
