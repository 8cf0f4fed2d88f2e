#pragma once

#include "commandline/CompileReport.h"
#include "platform/console/ConsoleAppKit.h"
#include "platform/console/ConsoleRunLoop.h"
#include "platform/media/pictures/Pictures.h"

namespace vistrane {

/// The AppKit kit of the command line: plain controls and alerts as text, real pictures. Tells the
/// report which frame the compile thread loads.
class SessionAppKit final : public ConsoleAppKit {
public:
    SessionAppKit(std::shared_ptr<const ConsoleAlertRules> alertRules, NSWorkspace& workspace,
                  ConsoleOutput& output, const ConsoleRunLoop& loop, const Pictures& pictures,
                  CompileReport& report)
        : ConsoleAppKit(std::move(alertRules), workspace, output), loop_(loop), pictures_(pictures),
          report_(report) {}

    /// Every command is a first run, which is nothing to be told of.
    void NSBeep() override {}

    /// There is nothing to draw resources on.
    std::shared_ptr<NSImage> imageNamed(const std::string&) override { return nullptr; }

    std::shared_ptr<NSImage> imageWithContentsOfFile(const std::string& path) override {
        if (!loop_.isMainThread()) {
            report_.frameIsLoaded(path);
        }
        return pictures_.imageWithContentsOfFile(path);
    }
    std::shared_ptr<NSImage> imageWithData(std::shared_ptr<NSData> data) override {
        return pictures_.imageWithData(data);
    }
    std::shared_ptr<NSBitmapImageRep> imageRepWithData(std::shared_ptr<NSData> data) override {
        return pictures_.imageRepWithData(data);
    }

    std::shared_ptr<NSGraphicsContext> graphicsContextWithCGContext(CGContextRef context,
                                                                    bool flipped) override {
        return pictures_.graphicsContextWithCGContext(context, flipped);
    }
    void saveGraphicsState() override { pictures_.saveGraphicsState(); }
    void setCurrentContext(std::shared_ptr<NSGraphicsContext> context) override {
        pictures_.setCurrentContext(std::move(context));
    }
    void restoreGraphicsState() override { pictures_.restoreGraphicsState(); }

private:
    const ConsoleRunLoop& loop_;
    const Pictures& pictures_;
    CompileReport& report_;
};

} // namespace vistrane
