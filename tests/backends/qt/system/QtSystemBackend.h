#pragma once

#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "backends/qt/system/QtAlert.h"
#include "backends/qt/system/QtUserDefaults.h"
#include "tests/backends/qt/loop/QtLoopBackend.h"
#include "tests/backends/qt/system/AlertUser.h"
#include "tests/support/WorkFolder.h"

namespace vistrane {

/// backends/qt/system for the contract suites, on the real clock.
class QtSystemBackend : public QtLoopBackend {
public:
    NSUserDefaults& userDefaults() { return *defaults_; }
    void storeText(const std::string& text, const std::string& key) {
        // A path of its own: QSettings may take two files of a name for one.
        path_ += "+";
        std::ofstream(path_) << "[General]\n" << key << "=" << text << "\n";
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

    /// A view of an interface file, whose form is not shown.
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
    WorkFolder folder_;
    std::string path_ = folder_ / "settings";
    std::optional<QtUserDefaults> defaults_{std::in_place, path_, [](const std::string&) {}};
    const std::shared_ptr<const QtDialogRules> dialogRules_ = std::make_shared<const QtDialogRules>(
        QtDialogRules{loop(), [] { return nullptr; },
                      [](NSView& view) { return dynamic_cast<PlainView&>(view).widget; }});
    AlertUser user_;
};

} // namespace vistrane
