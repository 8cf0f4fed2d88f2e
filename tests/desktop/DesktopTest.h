#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/desktop/Desktop.h"
#include "tests/desktop/waiting.h"
#include "tests/frontends/commandline/CommandLineTest.h"
#include "tests/frontends/commandline/frame_files.h"

namespace vistrane {

/// A message as it stands on the screen.
struct ShownAlert {
    std::string message;
    std::string informative;
    /// From left to right.
    std::vector<std::string> buttons;

    bool operator==(const ShownAlert&) const = default;
};

void PrintTo(const ShownAlert& alert, std::ostream* out);

/// Tests of the program's window by mouse, keys and what is on the screen. Each has a desktop of
/// its own, on which the program never ran before, and ends by closing the main window, unless the
/// program has ended already. Pictures of the screen are kept in VISTRANE_SCREENSHOTS.
class DesktopTest : public testing::Test {
protected:
    void TearDown() override;

    /// Starts the program without waiting for anything.
    void launch(const std::vector<std::string>& arguments = {});
    /// Starts the program and waits until its launch is over.
    void start(const std::vector<std::string>& arguments = {});
    /// Starts it as a user who has `count` frames and has seen the tips, and waits for the frames.
    void startWithFrames(int count, std::int64_t rate = 30, const FrameForm& form = {});
    /// Closes the main window and waits for the end: the exit status.
    int quit();
    int awaitEnd();
    Program& program() { return *program_; }
    Screen& screen() { return desktop.screen(); }

    Window mainWindow();
    void giveKeysToMainWindow();
    std::optional<Window> windowTitled(const std::string& title);
    /// The window of the tips; waits for it.
    Window tips();

    /// The first control on the screen that passes; waits for it.
    Control findFirst(const std::string& what, const ControlTest& passes);
    Control find(const std::string& role, const std::string& name);
    std::optional<Control> seek(const std::string& role, const std::string& name);
    Control button(const std::string& name) { return find("push button", name); }
    Control label(const std::string& text) { return find("label", text); }
    Control labelFrom(const std::string& beginning);
    void awaitLabel(const std::string& text) { label(text); }
    /// The view that shows the selected frame.
    Control frameView();
    Control cameraView();
    Control cameraList();
    Control progressBar();
    Control root() { return *root_; }

    void click(const Control& control);
    void clickButton(const std::string& name) { click(button(name)); }

    /// Clicks into a field and replaces its text.
    void fill(const std::string& field, const std::string& text);
    /// From the list that a click opens.
    void pickCamera(const std::string& name);
    /// By keys.
    void setSlider(const std::string& name, int value);
    /// Drags the knob of the frame slider from its right end to this part of its length.
    void dragFrameSliderTo(double part);

    /// The alert with that message; waits for it.
    ShownAlert alert(const std::string& message);
    /// Clicks a button of an alert and waits until the alert is gone.
    void answer(const std::string& message, const std::string& button);

    /// Types the path into the folder panel, which is open, and confirms.
    void typeFolder(const std::string& path);

    /// The read-out's number of the frame and of all frames; nothing without a read-out.
    std::optional<std::pair<int, int>> frameShown();
    void awaitFrame(int number, int count);
    /// Waits until the default application has been asked to open a movie, and returns its copy.
    std::string openedMovie();

    /// Writes settings as an earlier run left them.
    void store(const std::map<std::string, std::int64_t>& settings) const;
    /// The settings that are numbers.
    std::map<std::string, std::int64_t> stored() const;
    std::string settingsFile() const { return desktop.configuration() + "/vistrane/settings"; }
    /// The settings of a user who has seen the tips, and more.
    void storeUsual(std::int64_t rate = 30,
                    const std::map<std::string, std::int64_t>& more = {}) const;

    /// Frames of different colours named 001.png and so on.
    void makeFrames(int count, const FrameForm& form = {}) const;

    QImage pictureOf(const Control& control) { return screen().picture(control.extents()); }
    /// Whether a control shows more than black.
    bool isLit(const Control& control);
    /// Keeps a picture of the screen, for people to look at.
    void keepScreen(const std::string& name);

    Desktop desktop;
    std::string folder = desktop.work().makeFolder("time lapse");

private:
    Control dialog(const std::string& message);
    /// The extents of a control, once its window has been placed.
    QRect settledPlace(const Control& control);
    /// Clicks a control and waits until it has the keyboard focus.
    void focus(const Control& control);

    std::unique_ptr<Program> program_;
    std::optional<Control> root_;
    int pictures_ = 0;
};

/// With a camera of the PipeWire in which the tests run.
class CameraDesktopTest : public DesktopTest {
protected:
    void SetUp() override { ASSERT_TRUE(camera("start")); }
    void TearDown() override {
        DesktopTest::TearDown();
        EXPECT_TRUE(camera("stop"));
    }

    static bool camera(const std::string& verb);
};

} // namespace vistrane
