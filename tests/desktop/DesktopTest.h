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

/// Tests of the program's window by the means of the person at the screen: mouse, keys, and what is
/// to be seen and read. Each has a desktop of its own, on which the program was never run.
/// Pictures of the screen are kept in VISTRANE_SCREENSHOTS.
class DesktopTest : public testing::Test {
protected:
    DesktopTest();
    ~DesktopTest() override;

    void TearDown() override;

    /// Starts the program and waits for nothing.
    void launch(const std::vector<std::string>& arguments = {}, const Environment& more = {});
    /// Starts the program and waits for its window.
    void start(const std::vector<std::string>& arguments = {}, const Environment& more = {});
    /// Closes the main window and waits for the end: its status. How long it took is printed.
    int quit();
    int awaitEnd();
    Process& program() { return *program_; }
    Screen& screen() { return desktop.screen(); }

    /// The main window.
    Window window();
    void giveKeysToMainWindow();
    std::optional<Window> windowTitled(const std::string& title);

    /// A control that is to be seen, by its role and its name; waits for it.
    Control find(const std::string& role, const std::string& name);
    std::optional<Control> seek(const std::string& role, const std::string& name);
    Control button(const std::string& name) { return find("push button", name); }
    /// A label whose text is or begins like that.
    Control label(const std::string& text) { return find("label", text); }
    Control labelFrom(const std::string& beginning);
    void awaitLabel(const std::string& text) { label(text); }
    Control root() { return *root_; }

    void click(const Control& control);
    void clickButton(const std::string& name) { click(button(name)); }

    /// In the way of someone who clicks into a field and writes over what it holds.
    void fill(const std::string& field, const std::string& text);
    /// Through the list that a click opens.
    void pickCamera(const std::string& name);
    /// In the frame slider's and the rate slider's own way, by keys.
    void setSlider(const std::string& name, int value);

    /// The alert that stands on the screen; waits for it.
    ShownAlert alert(const std::string& message);
    /// Clicks a button of an alert and waits until it is gone.
    void answer(const std::string& message, const std::string& button);

    /// Opens the panel, types the path and confirms.
    void typeFolder(const std::string& path);

    /// The number of the frame in the read-out and that of all frames; nothing for no read-out.
    std::optional<std::pair<int, int>> frameShown();
    void awaitFrame(int number, int count);

    /// Puts settings into the store, as an earlier run left them.
    void store(const std::map<std::string, std::int64_t>& settings) const;
    /// The numbers of the store.
    std::map<std::string, std::int64_t> stored() const;
    std::string settingsFile() const { return desktop.configuration() + "/vistrane/settings"; }
    /// What someone has who ran the program before: no tips.
    void storeUsual(std::int64_t rate = 30) const;

    /// Grey frames named 01.png and so on.
    void makeFrames(int count, const FrameForm& form = {}) const;

    /// What is to be seen of a control.
    Picture pictureOf(const Control& control) { return screen().picture(control.extents()); }
    /// Keeps the screen for the people who look at the tests' output.
    void keepScreen(const std::string& name);

    Desktop desktop;
    std::string folder = desktop.work().makeFolder("time lapse");

private:
    std::string testName() const;
    /// Where a control is to be seen, once its window has its place.
    Rectangle settledPlace(const Control& control);

    std::unique_ptr<Process> program_;
    std::optional<Control> root_;
    int pictures_ = 0;
};

/// A camera of the PipeWire that the tests run in.
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
