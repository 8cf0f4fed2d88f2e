#pragma once

#include <functional>
#include <memory>
#include <string>

#include "backends/console/ConsoleWindow.h"
#include "backends/qt/loop/QtRunLoop.h"
#include "platform/appkit/NSAlert.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

/// What alerts need from the front end. Both functions are called on the thread that runs the
/// alert, possibly on several threads at the same time.
struct ConsoleAlertRules {
    QtRunLoop& loop;
    /// Shows the text of an alert: its message, a newline, its informative text. No final newline.
    std::function<void(const std::string& text)> show;
    /// Returns `NSAlertFirstButtonReturn` plus the index of the button that the user would press.
    /// May block, and need not return on a thread other than the main thread.
    std::function<NSModalResponse()> answer;
};

/// An alert as text.
class ConsoleAlert final : public NSAlert {
public:
    explicit ConsoleAlert(std::shared_ptr<const ConsoleAlertRules> rules);
    /// The standard alert for an error: its description, then its domain and code.
    ConsoleAlert(std::shared_ptr<const ConsoleAlertRules> rules, const NSError& error);

    void setMessageText(const std::string& text) override { messageText_ = text; }
    void setInformativeText(const std::string& text) override { informativeText_ = text; }
    void addButtonWithTitle(const std::string&) override {}
    void setAccessoryView(std::shared_ptr<NSView>) override {}
    NSWindow& window() override { return window_; }

    /// On the main thread, timers do not tick until the alert is answered.
    NSModalResponse runModal() override;

private:
    const std::shared_ptr<const ConsoleAlertRules> rules_;
    std::string messageText_;
    std::string informativeText_;
    ConsoleWindow window_;
};

} // namespace vistrane
