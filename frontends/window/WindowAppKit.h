#pragma once

#include <memory>
#include <string>
#include <utility>

#include <QApplication>

#include "backends/pictures/PictureAppKit.h"
#include "backends/qt/controls/QtImage.h"
#include "backends/qt/controls/QtResources.h"
#include "backends/qt/menus/QtMenu.h"
#include "backends/qt/system/QtAlert.h"
#include "backends/qt/system/QtOpenPanel.h"

namespace vistrane {

/// The AppKit kit of the window. The constructor's arguments outlive it.
class WindowAppKit final : public PictureAppKit {
public:
    WindowAppKit(NSApplication& application, NSWorkspace& workspace,
                 std::shared_ptr<const QtDialogRules> dialogRules, const QtResources& resources,
                 const Pictures& pictures)
        : PictureAppKit(pictures), application_(application), workspace_(workspace),
          dialogRules_(std::move(dialogRules)), resources_(resources) {}

    NSApplication& sharedApplication() override { return application_; }
    NSWorkspace& sharedWorkspace() override { return workspace_; }

    std::unique_ptr<NSAlert> alert() override { return std::make_unique<QtAlert>(dialogRules_); }
    std::unique_ptr<NSAlert> alertWithError(const NSError& error) override {
        return std::make_unique<QtAlert>(dialogRules_, error);
    }
    std::unique_ptr<NSOpenPanel> openPanel() override {
        return std::make_unique<QtOpenPanel>(dialogRules_);
    }
    std::shared_ptr<NSMenu> menu() override { return std::make_shared<QtMenu>(iconOf); }

    std::shared_ptr<NSImage> imageNamed(const std::string& name) override {
        return resources_.imageNamed(name);
    }

    void NSBeep() override { QApplication::beep(); }

private:
    NSApplication& application_;
    NSWorkspace& workspace_;
    const std::shared_ptr<const QtDialogRules> dialogRules_;
    const QtResources& resources_;
};

} // namespace vistrane
