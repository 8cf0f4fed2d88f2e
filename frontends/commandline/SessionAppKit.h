#pragma once

#include <memory>
#include <string>
#include <utility>

#include "backends/console/ConsoleAlert.h"
#include "backends/console/ConsoleApplication.h"
#include "backends/pictures/PictureAppKit.h"
#include "backends/qt/loop/QtRunLoop.h"
#include "frontends/commandline/CompileReport.h"

namespace vistrane {

/// The AppKit kit of the command line: alerts as text, real pictures, no panels or menus. Reports
/// each frame that the compile thread loads. The constructor's arguments outlive it.
class SessionAppKit final : public PictureAppKit {
public:
    SessionAppKit(std::shared_ptr<const ConsoleAlertRules> alertRules, NSWorkspace& workspace,
                  const QtRunLoop& loop, const Pictures& pictures, CompileReport& report)
        : PictureAppKit(pictures), alertRules_(std::move(alertRules)), workspace_(workspace),
          loop_(loop), report_(report) {}

    NSApplication& sharedApplication() override { return application_; }
    NSWorkspace& sharedWorkspace() override { return workspace_; }
    std::unique_ptr<NSAlert> alert() override {
        return std::make_unique<ConsoleAlert>(alertRules_);
    }
    std::unique_ptr<NSAlert> alertWithError(const NSError& error) override {
        return std::make_unique<ConsoleAlert>(alertRules_, error);
    }
    /// Null: no control of the command line opens the panel.
    std::unique_ptr<NSOpenPanel> openPanel() override { return nullptr; }
    /// Null: only the info panel creates menus, and the command line has no info panel.
    std::shared_ptr<NSMenu> menu() override { return nullptr; }

    /// Silent: the program beeps at a first run, which every command is.
    void NSBeep() override {}

    /// Null, because pictures of the interface are not drawn.
    std::shared_ptr<NSImage> imageNamed(const std::string&) override { return nullptr; }

    std::shared_ptr<NSImage> imageWithContentsOfFile(const std::string& path) override {
        if (!loop_.isMainThread()) {
            report_.frameIsLoaded(path);
        }
        return PictureAppKit::imageWithContentsOfFile(path);
    }

private:
    const std::shared_ptr<const ConsoleAlertRules> alertRules_;
    NSWorkspace& workspace_;
    const QtRunLoop& loop_;
    CompileReport& report_;
    ConsoleApplication application_;
};

} // namespace vistrane
