#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QWidget>

#include "backends/qt/loop/QtRunLoop.h"
#include "platform/appkit/NSAlert.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

/// What alerts and panels need from the front end. Outlives them.
struct QtDialogRules {
    QtRunLoop& loop;
    /// The parent of a dialog if no other is modal; null for none. Main thread.
    std::function<QWidget*()> parent;
    /// The widget of a view of the interface file; null for none. Main thread.
    std::function<QWidget*(NSView&)> widgetOf;
    /// Where a panel starts: a path as bytes; empty for the user's home. Main thread.
    std::function<std::string()> folder = [] { return std::string(); };
};

/// The parent of a new dialog: the open modal dialog, which would otherwise cover and block the new
/// one, or else the window of the rules. Main thread.
QWidget* dialogParent(const QtDialogRules& rules);

/// The contents of an alert.
struct AlertContents {
    std::string message;
    std::string informative;
    /// From left to right, in the order of their answers; the first is the default. Not empty.
    std::vector<std::string> buttons;
    std::shared_ptr<NSView> accessory;
};

/// An alert as a dialog. On the main thread it is modal, suspends timers and appears in front of an
/// open modal dialog. On another thread it waits until no dialog is modal and blocks only that
/// thread; the main window stays usable.
///
/// Closing the dialog by Escape or by its frame answers with its only button, otherwise with the
/// one titled "Cancel", otherwise with the last one.
class QtAlert final : public NSAlert {
public:
    explicit QtAlert(std::shared_ptr<const QtDialogRules> rules);
    /// The standard alert for an error: its text, its domain and code, and "OK".
    QtAlert(std::shared_ptr<const QtDialogRules> rules, const NSError& error);

    void setMessageText(const std::string& text) override { contents_.message = text; }
    void setInformativeText(const std::string& text) override { contents_.informative = text; }
    void addButtonWithTitle(const std::string& title) override {
        contents_.buttons.push_back(title);
    }
    void setAccessoryView(std::shared_ptr<NSView> view) override {
        contents_.accessory = std::move(view);
    }
    NSWindow& window() override { return window_; }
    NSModalResponse runModal() override;

private:
    /// The dialog is created when the alert runs, and title bars belong to the window manager.
    struct Window final : NSWindow {
        bool makeFirstResponder(NSObject*) override { return false; }
        void makeKeyAndOrderFront(NSObject*) override {}
        void setTitle(const std::string&) override {}
        void setTitlebarAppearsTransparent(bool) override {}
    };

    NSModalResponse runOnMainThread() const;
    NSModalResponse runOnOtherThread() const;

    const std::shared_ptr<const QtDialogRules> rules_;
    AlertContents contents_;
    Window window_;
};

} // namespace vistrane
