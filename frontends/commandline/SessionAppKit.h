#pragma once

#include <memory>
#include <string>
#include <utility>

#include "backends/console/ConsoleAlert.h"
#include "backends/console/ConsoleApplication.h"
#include "backends/console/ConsoleMenu.h"
#include "backends/console/ConsoleOpenPanel.h"
#include "backends/console/ConsoleRunLoop.h"
#include "backends/pictures/PictureAppKit.h"
#include "frontends/commandline/CompileReport.h"

namespace vistrane {

/// The AppKit kit of the command line: plain controls and alerts as text, real pictures. Tells the
/// report which frame the compile thread loads. What is given here outlives it.
class SessionAppKit final : public PictureAppKit {
public:
    SessionAppKit(std::shared_ptr<const ConsoleAlertRules> alertRules, NSWorkspace& workspace,
                  const ConsoleRunLoop& loop, const Pictures& pictures, CompileReport& report)
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
    std::unique_ptr<NSOpenPanel> openPanel() override {
        return std::make_unique<ConsoleOpenPanel>();
    }
    std::shared_ptr<NSMenu> menu() override { return std::make_shared<ConsoleMenu>(); }

    /// Every command is a first run, which is nothing to be told of.
    void NSBeep() override {}

    /// There is nothing to draw resources on.
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
    const ConsoleRunLoop& loop_;
    CompileReport& report_;
    ConsoleApplication application_;
};

} // namespace vistrane
