#pragma once

#include <chrono>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "backends/posix/FileUserDefaults.h"
#include "backends/posix/settings_text.h"
#include "backends/qt/system/QtAlert.h"
#include "backends/qt/system/QtDispatch.h"
#include "backends/qt/system/QtFoundation.h"
#include "tests/backends/posix/TemporaryFolder.h"
#include "tests/backends/qt/system/AlertUser.h"

namespace vistrane {

/// The system half of the window for the contract suites, on the real clock.
class QtSystemBackend {
public:
    Foundation& foundation() { return foundation_; }
    Dispatch& dispatch() { return dispatch_; }
    void stall(double seconds) {
        std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    }

    NSUserDefaults& userDefaults() { return *defaults_; }
    void storeText(const std::string& text, const std::string& key) {
        std::ofstream(path_) << settingsText({{key, text}});
        reopen();
    }
    bool reopen() {
        defaults_.emplace(path_, [](const std::string&) {});
        return true;
    }

    std::unique_ptr<NSAlert> alert() { return std::make_unique<QtAlert>(dialogRules_); }
    std::unique_ptr<NSAlert> alertWithError(const NSError& error) {
        return std::make_unique<QtAlert>(dialogRules_, error);
    }
    std::shared_ptr<NSView> view() { return std::make_shared<PlainView>(); }
    void answerNextAlert(NSInteger button, double seconds) {
        user_.pressButton(static_cast<int>(button), seconds);
    }
    void confirmNextAlert(double seconds) {
        user_.withNext(seconds, [](QDialog& dialog) { pressKey(dialog, Qt::Key_Return); });
    }
    AlertUser& user() { return user_; }
    const std::shared_ptr<const QtDialogRules>& dialogRules() const { return dialogRules_; }

    /// A view of an interface file: its widget lies in a form that is not shown.
    class PlainView final : public NSView {
    public:
        NSRect bounds() const override { return NSZeroRect; }
        void setWantsLayer(bool) override {}
        std::shared_ptr<CALayer> layer() override { return nullptr; }
        void setNeedsDisplay(bool) override {}

        QWidget form;
        QWidget* const widget = new QWidget(&form);
    };

private:
    TemporaryFolder folder_;
    QtRunLoop loop_;
    QtDispatch dispatch_{loop_};
    NotificationCenter notificationCenter_;
    const std::string path_ = folder_ / "settings";
    std::optional<FileUserDefaults> defaults_{std::in_place, path_, [](const std::string&) {}};
    QtFoundation foundation_{loop_, *defaults_, notificationCenter_, [](const std::string&) {},
                             "1.2.3"};
    const std::shared_ptr<const QtDialogRules> dialogRules_ = std::make_shared<const QtDialogRules>(
        QtDialogRules{loop_, [] { return nullptr; },
                      [](NSView& view) { return dynamic_cast<PlainView&>(view).widget; }});
    AlertUser user_;
};

} // namespace vistrane
