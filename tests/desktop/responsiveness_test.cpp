#include <algorithm>
#include <iostream>

#include "tests/desktop/DesktopTest.h"

namespace vistrane {
namespace {

/// The window answers while it is busy. The times are printed and fail no test.
class Responsiveness : public CameraDesktopTest {
protected:
    void measure(const std::string& what) { times_[what].push_back(screen().roundTrip(window_)); }

    /// Until the condition holds.
    template <typename Condition>
    void measureUntil(const std::string& what, Condition condition) {
        while (!condition()) {
            for (int times = 0; times < 10; ++times) {
                measure(what);
            }
        }
    }

    void report() {
        for (auto& [what, times] : times_) {
            std::sort(times.begin(), times.end());
            using Milliseconds = std::chrono::duration<double, std::milli>;
            std::cout << "answers while " << what << ": median "
                      << Milliseconds(times[times.size() / 2]).count() << " ms, longest "
                      << Milliseconds(times.back()).count() << " ms of " << times.size() << '\n';
        }
    }

    Window window_;
    std::map<std::string, std::vector<std::chrono::microseconds>> times_;
};

TEST_F(Responsiveness, TheWindowAnswersWhateverGoesOn) {
    startWithFrames(40, 10, {.width = 1280, .height = 720, .isNoise = true});
    window_ = mainWindow();
    for (int times = 0; times < 200; ++times) {
        measure("idle");
    }

    const QRect place = find("slider", "Frame").extents();
    const int middle = place.center().y();
    screen().moveTo({place.right() - 14, middle});
    screen().press();
    for (int x = place.right() - 14; x > place.x(); x -= 4) {
        screen().moveTo({x, middle});
        measure("browsing");
    }
    screen().release();
    awaitFrame(1, 40);

    clickButton("Play");
    await("playing to begin", [this] { return frameShown()->first > 1; });
    measureUntil("playing", [this] { return frameShown()->first == 40; });

    pickCamera("Testcam");
    clickButton("Start Auto Capture");
    measureUntil("capturing every second",
                 [this] { return namesEndingIn(".png", folder).size() >= 44; });
    clickButton("Stop Auto Capture");
    button("Start Auto Capture");

    const Control compile = button("Compile Movie");
    click(compile);
    await("the compile to begin", [&] { return !compile.is(ControlState::enabled); });
    measureUntil("compiling", [&] { return compile.is(ControlState::enabled); });
    openedMovie();
    report();
}

} // namespace
} // namespace vistrane
