#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "backends/console/ConsoleAlert.h"
#include "backends/console/ConsoleImageView.h"
#include "backends/console/ConsoleInterface.h"
#include "tests/backends/qt/loop/QtLoopBackend.h"

namespace vistrane {

/// The console for the contract suites, on the real clock.
class ConsoleBackend : public QtLoopBackend {
public:
    std::unique_ptr<NSAlert> alert() { return std::make_unique<ConsoleAlert>(alertRules_); }
    std::unique_ptr<NSAlert> alertWithError(const NSError& error) {
        return std::make_unique<ConsoleAlert>(alertRules_, error);
    }
    std::shared_ptr<NSView> view() { return std::make_shared<ConsoleImageView>(); }
    void answerNextAlert(NSInteger button, double seconds) {
        button_ = button;
        secondsUp_ = seconds;
    }
    void confirmNextAlert(double seconds) { answerNextAlert(0, seconds); }

    std::shared_ptr<NSButton> button() { return std::make_shared<ConsoleButton>(""); }
    std::shared_ptr<NSTextField> textField() { return std::make_shared<ConsoleTextField>(); }
    std::string text(NSTextField& field) {
        return dynamic_cast<ConsoleTextField&>(field).stringValue();
    }
    std::shared_ptr<NSSlider> slider() { return std::make_shared<ConsoleSlider>(0.0, 0.0, 0.0); }
    std::shared_ptr<NSPopUpButton> popUp() { return std::make_shared<ConsolePopUpButton>(); }
    std::vector<std::string> titles(NSPopUpButton& popUp) {
        return dynamic_cast<ConsolePopUpButton&>(popUp).itemTitles();
    }
    void pick(NSPopUpButton& popUp, NSInteger index) {
        dynamic_cast<ConsolePopUpButton&>(popUp).userPicks(index);
    }
    std::shared_ptr<NSImageView> imageView() { return std::make_shared<ConsoleImageView>(); }
    std::shared_ptr<NSProgressIndicator> progressBar() {
        return std::make_shared<ConsoleProgressIndicator>();
    }
    double shownPart(NSProgressIndicator& bar) {
        const auto& shown = dynamic_cast<ConsoleProgressIndicator&>(bar);
        return std::min(shown.doubleValue() / shown.maxValue(), 1.0);
    }

    NSNib& nib() { return interface_; }
    std::string missingOutlet() { return "noSuchControl"; }
    void click(const std::string& outlet, const std::string&) {
        std::shared_ptr<NSButton> button;
        interface_.outlet(outlet, button);
        dynamic_cast<ConsoleButton&>(*button).performClick();
    }

    std::shared_ptr<NSWindow> window() { return std::make_shared<ConsoleWindow>(); }

private:
    NSModalResponse answer() {
        if (loop().isMainThread()) {
            loop().runUntilDate(foundation().dateWithTimeIntervalSinceNow(secondsUp_));
        } else {
            stall(secondsUp_);
        }
        return NSAlertFirstButtonReturn + button_;
    }

    ConsoleInterface interface_;
    NSInteger button_ = 0;
    double secondsUp_ = 0.0;
    std::shared_ptr<const ConsoleAlertRules> alertRules_ =
        std::make_shared<const ConsoleAlertRules>(
            ConsoleAlertRules{loop(), [](const std::string&) {}, [this] { return answer(); }});
};

} // namespace vistrane
