#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "backends/console/ConsoleRunLoop.h"
#include "backends/console/ConsoleWindow.h"
#include "platform/appkit/NSAlert.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

class ConsoleAlert;

/// What alerts need of the front end. Both functions are called on the alert's thread, several
/// threads at once.
struct ConsoleAlertRules {
    ConsoleRunLoop& loop;
    /// Takes the text of an alert: its message, then its informative text, without a line end.
    std::function<void(const std::string& text)> show;
    /// Answers in the user's place: `NSAlertFirstButtonReturn` plus the button's number. May block;
    /// on a thread that is not the main one for ever.
    std::function<NSModalResponse(const ConsoleAlert&)> answer;
};

/// An alert as text. Without a rule for answers it answers with the default button.
class ConsoleAlert final : public NSAlert {
public:
    explicit ConsoleAlert(std::shared_ptr<const ConsoleAlertRules> rules);
    /// The standard alert for an error: its text, its domain and code, and "OK".
    ConsoleAlert(std::shared_ptr<const ConsoleAlertRules> rules, const NSError& error);

    void setMessageText(const std::string& text) override { messageText_ = text; }
    void setInformativeText(const std::string& text) override { informativeText_ = text; }
    void addButtonWithTitle(const std::string& title) override { buttons_.push_back(title); }
    void setAccessoryView(std::shared_ptr<NSView>) override {}
    NSWindow& window() override { return window_; }

    /// Timers hold back while the main thread waits for the answer.
    NSModalResponse runModal() override;

    const std::string& messageText() const { return messageText_; }
    const std::string& informativeText() const { return informativeText_; }
    /// The titles in order; while the alert runs there is at least one.
    const std::vector<std::string>& buttonTitles() const { return buttons_; }
    /// Whether the calling thread, the alert's, is the main one.
    bool isOnMainThread() const { return rules_->loop.isMainThread(); }

private:
    NSModalResponse answer() const;

    const std::shared_ptr<const ConsoleAlertRules> rules_;
    std::string messageText_;
    std::string informativeText_;
    std::vector<std::string> buttons_;
    ConsoleWindow window_;
};

} // namespace vistrane
