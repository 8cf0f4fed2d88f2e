#pragma once

#include <memory>
#include <string>
#include <utility>

#include <QApplication>

#include "backends/pictures/PictureAppKit.h"
#include "backends/qt/controls/QtImage.h"
#include "backends/qt/controls/QtResources.h"
#include "backends/qt/loop/QtRunLoop.h"
#include "backends/qt/menus/QtMenu.h"
#include "backends/qt/system/QtAlert.h"
#include "backends/qt/system/QtOpenPanel.h"
#include "frontends/window/LeftOutFrames.h"

namespace vistrane {

/// The AppKit kit of the window. Reports each frame that the compile thread loads. The
/// constructor's arguments outlive it.
class WindowAppKit final : public PictureAppKit {
public:
    WindowAppKit(NSApplication& application, NSWorkspace& workspace,
                 std::shared_ptr<const QtDialogRules> dialogRules, const QtResources& resources,
                 const Pictures& pictures, const QtRunLoop& loop, LeftOutFrames& leftOut)
        : PictureAppKit(pictures), application_(application), workspace_(workspace),
          dialogRules_(std::move(dialogRules)), resources_(resources), loop_(loop),
          leftOut_(leftOut) {}

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

    std::shared_ptr<NSImage> imageWithContentsOfFile(const std::string& path) override {
        if (!loop_.isMainThread()) {
            leftOut_.frameIsLoaded(path);
        }
        return PictureAppKit::imageWithContentsOfFile(path);
    }

    void NSBeep() override { QApplication::beep(); }

private:
    NSApplication& application_;
    NSWorkspace& workspace_;
    const std::shared_ptr<const QtDialogRules> dialogRules_;
    const QtResources& resources_;
    const QtRunLoop& loop_;
    LeftOutFrames& leftOut_;
};

} // namespace vistrane
