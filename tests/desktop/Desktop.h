#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/desktop/Accessibility.h"
#include "tests/desktop/Screen.h"
#include "tests/frontends/commandline/CommandLineTest.h"
#include "tests/support/FakeServices.h"
#include "tests/support/Program.h"

namespace vistrane {

/// A desktop of the test's own: a display, a window manager, a session bus, assistive technologies,
/// a portal, a home folder, and a default application that only records what it is asked to open.
/// Cameras are those of the PipeWire in which the test itself runs.
class Desktop {
public:
    Desktop();
    ~Desktop();
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

    /// A tool that a desktop needs and that is not installed, if any.
    static std::optional<std::string> missingTool();

    Screen& screen() { return *screen_; }
    FakeServices& services() { return *services_; }
    /// The desktop's appearance; light at first.
    void switchTo(ColourScheme scheme) { services_->switchTo(scheme); }

    /// Starts a program on this desktop. Its output goes to "NAME.log".
    std::unique_ptr<Program> start(const std::string& name, const std::vector<std::string>& command,
                                   const EnvironmentChanges& more = {});

    /// Its controls; waits until it has some.
    Control controlsOf(Program& program);

    /// The addresses that programs asked to open, in order.
    std::vector<std::string> opened() const;
    /// A copy of a file, made at the moment at which it was asked to be opened.
    std::string copyOfOpened(std::size_t index) const;

    /// The output of the desktop's programs, for the report of a failed test.
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
    EnvironmentChanges environment_;
    std::vector<std::unique_ptr<Program>> programs_;
    std::unique_ptr<Screen> screen_;
    std::unique_ptr<FakeServices> services_;
    std::shared_ptr<AccessibilityBus> accessibility_;
};

} // namespace vistrane
