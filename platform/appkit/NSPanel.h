#pragma once

#include <memory>
#include <string>
#include <utility>

#include "platform/appkit/NSWindow.h"

namespace vistrane {

/// A window that is an object of the program. `NSNib::window` gives it the window that the back end
/// made from the interface file; the panel forwards all messages to it. Main thread only.
class NSPanel : public NSWindow {
public:
    void setContents(std::shared_ptr<NSWindow> contents) { contents_ = std::move(contents); }

    bool makeFirstResponder(NSObject* responder) override {
        return contents_ && contents_->makeFirstResponder(responder);
    }
    void makeKeyAndOrderFront(NSObject* sender) override {
        if (contents_) {
            contents_->makeKeyAndOrderFront(sender);
        }
    }
    void setTitle(const std::string& title) override {
        if (contents_) {
            contents_->setTitle(title);
        }
    }
    void setTitlebarAppearsTransparent(bool transparent) override {
        if (contents_) {
            contents_->setTitlebarAppearsTransparent(transparent);
        }
    }

private:
    std::shared_ptr<NSWindow> contents_;
};

} // namespace vistrane
