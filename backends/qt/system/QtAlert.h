#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QWidget>

#include "backends/qt/system/QtRunLoop.h"
#include "platform/appkit/NSAlert.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

/// What alerts and panels need of the front end. It outlives them.
struct QtDialogRules {
    QtRunLoop& loop;
    /// The window that dialogs stand in front of while none is modal; null for none. Main thread.
    std::function<QWidget*()> parent;
    /// The widget of a view of the interface file; null for none. Main thread.
    std::function<QWidget*(NSView&)> widgetOf;
};

/// The parent of a new dialog: the modal dialog that is up, for nothing else can be used and it is
/// not to cover the new one, else the rules' window. Main thread.
QWidget* dialogParent(const QtDialogRules& rules);

/// What an alert shows.
struct AlertContents {
    std::string title = "Vistrane";
    std::string message;
    std::string informative;
    /// In the order in which they stand and answer; the first is the default. Not empty.
    std::vector<std::string> buttons;
    std::shared_ptr<NSView> accessory;
};

/// An alert as a dialog. On the main thread it is modal and timers hold back; on another thread it
/// stands beside the main window, which stays usable, while the thread sleeps until the answer. The
/// former stands in front of a modal dialog that is up, the latter waits for its end.
///
/// Closing the dialog by Escape or by its frame gives the answer of its only button, else that of
/// the one titled "Cancel", else that of the last.
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
    /// The dialog is made when the alert runs; until then there is only its title to be set.
    class Window final : public NSWindow {
    public:
        explicit Window(AlertContents& contents) : contents_(contents) {}
        bool makeFirstResponder(NSObject*) override { return false; }
        void makeKeyAndOrderFront(NSObject*) override {}
        void setTitle(const std::string& title) override { contents_.title = title; }
        /// Desktops draw their own title bars here.
        void setTitlebarAppearsTransparent(bool) override {}

    private:
        AlertContents& contents_;
    };

    NSModalResponse runOnMainThread() const;
    NSModalResponse runBesideMainThread() const;

    const std::shared_ptr<const QtDialogRules> rules_;
    AlertContents contents_;
    Window window_{contents_};
};

} // namespace vistrane
