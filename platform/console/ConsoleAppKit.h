#pragma once

#include <memory>
#include <utility>

#include "platform/appkit/AppKit.h"
#include "platform/console/ConsoleAlert.h"
#include "platform/console/ConsoleApplication.h"
#include "platform/console/ConsoleMenu.h"
#include "platform/console/ConsoleOpenPanel.h"
#include "platform/console/ConsoleOutput.h"
#include "platform/console/ConsoleWorkspace.h"

namespace vistrane {

/// What of the AppKit kit has to do with the user. Pictures and graphics contexts are added by a
/// class of the front end. What is given here outlives it.
class ConsoleAppKit : public AppKit {
public:
    ConsoleAppKit(std::shared_ptr<const ConsoleAlertRules> alertRules, NSWorkspace& workspace,
                  ConsoleOutput& output)
        : alertRules_(std::move(alertRules)), workspace_(workspace), output_(output) {}

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
    void NSBeep() override { output_.beep(); }

private:
    const std::shared_ptr<const ConsoleAlertRules> alertRules_;
    NSWorkspace& workspace_;
    ConsoleOutput& output_;
    ConsoleApplication application_;
};

} // namespace vistrane
