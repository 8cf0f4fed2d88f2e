#include <csignal>
#include <functional>

#include "tests/desktop/DesktopTest.h"
#include "tests/soak/CompileFolder.h"
#include "tests/support/Soak.h"

namespace vistrane {
namespace {

using testing::Contains;
using testing::Pair;

class WindowQuits : public DesktopTest {
protected:
    /// A state of the window, and how to reach it.
    struct State {
        std::string name;
        std::function<void()> reach;
        /// Whether the window has the keyboard, so that Ctrl+Q works.
        bool hasKeys = true;
        std::string folder = {};
    };

    WindowQuits();

    /// A change of a setting, in the running window.
    void change() {
        seconds_ = 2 + (seconds_ + 1) % 50;
        fill("Seconds", std::to_string(seconds_));
        awaitLabel("( t = " + std::to_string(seconds_) + " s )");
    }
    /// Asks the window to quit in one of five ways. Returns the expected status.
    int askToQuit(int way, bool hasKeys);

    /// Checks that stills are whole, and removes them.
    void checkStills() const;

    const std::string stills = desktop.work().makeFolder("stills");
    const std::string single = desktop.work().makeFolder("single");
    const CompileFolder frames{folder, {.frames = 24, .width = 320, .height = 240}};
    std::vector<State> states;
    int seconds_ = 0;
};

WindowQuits::WindowQuits() {
    writeGreyFrame(single + "/a.png", 100);
    states = {
        {"idle", [this] { awaitFrame(24, 24); }},
        {"playing",
         [this] {
             awaitFrame(24, 24);
             clickButton("Play");
         }},
        {"compiling",
         [this] {
             awaitFrame(24, 24);
             clickButton("Compile Movie");
         }},
        {"capturing",
         [this] {
             pickCamera("Demo Camera");
             clickButton("Start Auto Capture");
         },
         true, stills},
        {"modal alert",
         [this] {
             awaitFrame(1, 1);
             clickButton("Compile Movie");
             alert("Bring me more frames please");
         },
         false, single},
        {"compiling again",
         [this] {
             awaitFrame(24, 24);
             clickButton("Compile Movie");
         }},
        {"camera list", [this] { click(cameraList()); }, false},
        {"folder panel",
         [this] {
             clickButton(folder);
             find("dialog", "Select Output Folder to Save the Capture");
         },
         false},
    };
}

int WindowQuits::askToQuit(int way, bool hasKeys) {
    constexpr int numbers[] = {SIGINT, SIGTERM, SIGHUP};
    if (way < 3) {
        program().signal(numbers[way]);
        return 128 + numbers[way];
    }
    if (way == 3 || !hasKeys) {
        screen().close(mainWindow());
    } else {
        screen().press({"Control_L", "q"});
    }
    return 0;
}

void WindowQuits::checkStills() const {
    for (const std::string& name : namesIn(stills)) {
        EXPECT_TRUE(readFrame(stills + "/" + name)) << name;
        std::filesystem::remove(stills + "/" + name);
    }
}

TEST_F(WindowQuits, InEveryStateSaveTheSettingsAndLeaveNothingBroken) {
    storeUsual();
    Times times;
    Soak soak("quits of the window", {.few = 8, .many = 200});
    while (soak.next()) {
        const auto turn = static_cast<std::size_t>(soak.round() - 1);
        const State& state = states[turn % states.size()];
        const int way = soak.randomUpTo(4);
        SCOPED_TRACE(state.name + ", way " + std::to_string(way));
        start({state.folder.empty() ? folder : state.folder, "--demo-camera"});
        change();
        state.reach();
        soak.sleepUpTo(std::chrono::milliseconds(400));
        const StopWatch watch;
        const int expected = askToQuit(way, state.hasKeys);
        EXPECT_EQ(awaitEnd(), expected);
        const double time = watch.milliseconds();

        EXPECT_THAT(stored(), Contains(Pair("iSecond", seconds_)));
        const CompileFolder::Found found = frames.check();
        EXPECT_EQ(found.leftovers, 0);
        if (found.movies == 0) {
            times.add(time);
        }
        checkStills();
    }
    soak.report(std::to_string(soak.round()) +
                    " quits in eight states, settings saved each time; the slowest end took " +
                    std::to_string(static_cast<int>(times.worst())) + " ms",
                times.worst() <= 1000 && !HasFailure());
}

TEST_F(WindowQuits, WhileItStartsLeaveTheSettingsWhole) {
    storeUsual();
    const auto before = stored();
    Soak soak("quits of the starting window", {.few = 2, .many = 50});
    while (soak.next()) {
        const int way = soak.randomUpTo(2);
        SCOPED_TRACE(way);
        launch({folder});
        soak.sleepUpTo(std::chrono::milliseconds(1500));
        const int expected = askToQuit(way, false);
        const int status = awaitEnd();
        // Before the program handles signals it has done nothing.
        EXPECT_TRUE(status == expected || status == 128 - expected) << status;
        // The place of the window may have been added.
        EXPECT_THAT(stored(), testing::IsSupersetOf(before));
    }
    soak.report(std::to_string(soak.round()) + " signals within 1.5 s of the start", !HasFailure());
}

} // namespace
} // namespace vistrane
