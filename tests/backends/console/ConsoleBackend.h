#pragma once

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "backends/console/ConsoleAlert.h"
#include "backends/console/ConsoleDispatch.h"
#include "backends/console/ConsoleFoundation.h"
#include "backends/console/ConsoleInterface.h"
#include "backends/console/MemoryUserDefaults.h"

namespace vistrane {

/// The console for the contract suites, on the real clock.
class ConsoleBackend {
public:
    ConsoleBackend() { interface_.addTo(nib_); }
    ~ConsoleBackend() { close(nowhere_); }

    Foundation& foundation() { return foundation_; }
    Dispatch& dispatch() { return dispatch_; }
    void stall(double seconds) {
        std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    }

    NSUserDefaults& userDefaults() { return defaults_; }
    void storeText(const std::string& text, const std::string& key) {
        defaults_.setString(text, key);
    }
    bool reopen() { return false; }

    std::unique_ptr<NSAlert> alert() { return std::make_unique<ConsoleAlert>(alertRules_); }
    std::unique_ptr<NSAlert> alertWithError(const NSError& error) {
        return std::make_unique<ConsoleAlert>(alertRules_, error);
    }
    std::shared_ptr<NSView> view() { return std::make_shared<ConsoleView>(); }
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

    NSNib& nib() { return nib_; }
    std::string missingOutlet() { return "noSuchControl"; }
    void click(const std::string& outlet, const std::string&) {
        std::shared_ptr<NSButton> button;
        nib_.outlet(outlet, button);
        dynamic_cast<ConsoleButton&>(*button).performClick();
    }

    std::shared_ptr<NSWindow> window() { return std::make_shared<ConsoleWindow>(); }

private:
    NSModalResponse answer(const ConsoleAlert& alert) {
        if (alert.isOnMainThread()) {
            loop_.runUntilDate(foundation_.dateWithTimeIntervalSinceNow(secondsUp_));
        } else {
            stall(secondsUp_);
        }
        return NSAlertFirstButtonReturn + button_;
    }

    int nowhere_ = open("/dev/null", O_WRONLY | O_CLOEXEC);
    ConsoleOutput output_{nowhere_};
    MemoryUserDefaults defaults_;
    ConsoleRunLoop loop_;
    ConsoleDispatch dispatch_{loop_};
    ConsoleFoundation foundation_{loop_, defaults_, output_, "1.2.3"};
    ConsoleInterface interface_;
    ConsoleNib nib_;
    NSInteger button_ = 0;
    double secondsUp_ = 0.0;
    std::shared_ptr<const ConsoleAlertRules> alertRules_ =
        std::make_shared<const ConsoleAlertRules>(ConsoleAlertRules{
            loop_, {}, [this](const ConsoleAlert& alert) { return answer(alert); }});
};

} // namespace vistrane
