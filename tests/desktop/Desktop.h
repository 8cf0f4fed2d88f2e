#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/desktop/Accessibility.h"
#include "tests/desktop/AppearancePortal.h"
#include "tests/desktop/Process.h"
#include "tests/desktop/Screen.h"
#include "tests/frontends/commandline/CommandLineTest.h"

namespace vistrane {

/// A whole desktop of the test's own: a display, a window manager, a session bus, assistive
/// technologies, a portal, a home folder and a default application that only takes notes. It sees
/// the cameras of the PipeWire that the test itself was started in.
class Desktop {
public:
    Desktop();
    ~Desktop();
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

    /// What is not installed; nothing when there is all that a desktop needs.
    static std::optional<std::string> missingTool();

    Screen& screen() { return *screen_; }
    AppearancePortal& portal() { return *portal_; }

    /// Starts a program on this desktop. What it writes goes to "NAME.log".
    std::unique_ptr<Process> start(const std::string& name, const std::vector<std::string>& command,
                                   const Environment& more = {});

    /// Its controls; waits until it has some.
    Control controlsOf(Process& process);

    /// The addresses that programs asked to open, in order.
    std::vector<std::string> opened() const;
    /// A copy that was made of a file in the moment in which it was asked to be opened.
    std::string copyOfOpened(std::size_t index) const;

    /// What the desktop's own programs wrote, for the report of a failed test.
    std::string logs() const;

    std::string home() const { return home_; }
    std::string configuration() const { return home_ + "/.config"; }
    const WorkFolder& work() const { return work_; }

private:
    void startDisplay();
    void startBus();
    void startWindowManager();
    void recordOpening() const;

    WorkFolder work_;
    std::string home_ = work_.makeFolder("home");
    std::string runtime_ = work_.makeFolder("run");
    std::string tools_ = work_.makeFolder("bin");
    std::string records_ = work_.makeFolder("opened");
    std::string bus_ = "unix:path=" + runtime_ + "/bus";
    std::string display_;
    Environment environment_;
    std::vector<std::unique_ptr<Process>> processes_;
    std::unique_ptr<Screen> screen_;
    std::unique_ptr<AppearancePortal> portal_;
    std::shared_ptr<AccessibilityBus> accessibility_;
};

} // namespace vistrane
