#pragma once

#include "backends/sim/CallLog.h"
#include "backends/sim/SimDrawing.h"
#include "backends/sim/SimPanels.h"
#include "backends/sim/SimPictures.h"
#include "platform/appkit/AppKit.h"

namespace vistrane {

class SimApplication final : public NSApplication, public SimObject {
public:
    explicit SimApplication(CallLog& log) : SimObject(log, "sharedApplication") {}
    void miniaturizeAll(NSObject* sender) override;
    bool setActivationPolicy(NSApplicationActivationPolicy policy) override;
    void activateIgnoringOtherApps(bool ignoring) override;
};

class SimWorkspace final : public NSWorkspace, public SimObject {
public:
    explicit SimWorkspace(CallLog& log) : SimObject(log, "sharedWorkspace") {}
    bool openURL(const NSURL& url) override;

    std::atomic<bool> opens{true};
};

class SimAppKit final : public AppKit {
public:
    SimAppKit(CallLog& log, SimAlerts& alerts, SimOpenPanels& panels, SimPictures& pictures,
              SimDrawing& drawing);

    NSApplication& sharedApplication() override { return application; }
    NSWorkspace& sharedWorkspace() override { return workspace; }
    std::unique_ptr<NSAlert> alert() override { return alerts_.make(); }
    std::unique_ptr<NSAlert> alertWithError(const NSError& error) override {
        return alerts_.makeForError(error);
    }
    std::unique_ptr<NSOpenPanel> openPanel() override { return panels_.make(); }
    std::shared_ptr<NSMenu> menu() override;
    std::shared_ptr<NSImage> imageNamed(const std::string& name) override {
        return pictures_.named(name);
    }
    std::shared_ptr<NSImage> imageWithContentsOfFile(const std::string& path) override {
        return pictures_.withContentsOfFile(path);
    }
    std::shared_ptr<NSImage> imageWithData(std::shared_ptr<NSData> data) override {
        return pictures_.withData(data);
    }
    std::shared_ptr<NSBitmapImageRep> imageRepWithData(std::shared_ptr<NSData> data) override {
        return pictures_.repWithData(data);
    }
    std::shared_ptr<NSGraphicsContext> graphicsContextWithCGContext(CGContextRef context,
                                                                    bool flipped) override {
        return drawing_.wrap(context, flipped);
    }
    void saveGraphicsState() override { drawing_.saveGraphicsState(); }
    void setCurrentContext(std::shared_ptr<NSGraphicsContext> context) override {
        drawing_.setCurrentContext(std::move(context));
    }
    void restoreGraphicsState() override { drawing_.restoreGraphicsState(); }
    void NSBeep() override;

    SimApplication application;
    SimWorkspace workspace;

private:
    CallLog& log_;
    SimAlerts& alerts_;
    SimOpenPanels& panels_;
    SimPictures& pictures_;
    SimDrawing& drawing_;
};

} // namespace vistrane
