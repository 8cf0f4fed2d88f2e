#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <QObject>
#include <QPointer>
#include <QWidget>

#include "backends/qt/controls/Action.h"
#include "backends/qt/controls/QtTextField.h"
#include "platform/appkit/NSWindow.h"

namespace vistrane {

/// A window on a widget that outlives it, with the controls that can have its keyboard focus.
class QtWindow final : public NSWindow, private QObject {
public:
    explicit QtWindow(QWidget& widget);

    /// `widget` is the control's own, in this window.
    void addControl(const NSObject& control, QWidget& widget) { controls_[&control] = &widget; }
    /// A control, added before or after, whose edit the window ends.
    void addField(std::shared_ptr<QtTextField> field) { fields_.push_back(std::move(field)); }

    /// Ends the edit of every other field and gives the focus to the control; false when the
    /// window has no such control. With null no control has the focus, so that nothing more is
    /// typed into a field; the tabulator then goes on from the control that had it: who works
    /// without a mouse is not sent back to the first one.
    bool makeFirstResponder(NSObject* responder) override;
    /// Shows the window, also when it is minimised. One that is held back waits.
    void makeKeyAndOrderFront(NSObject* sender) override;
    void setTitle(const std::string& title) override;
    /// Title bars belong to the window manager.
    void setTitlebarAppearsTransparent(bool) override {}

    /// Sent to the window's delegate each time that the window closes.
    void setWillCloseAction(NSAction action) { willClose_.set(std::move(action)); }

    /// Let go, it shows if it was to be shown meanwhile.
    void setHeldBack(bool isHeldBack);

    QWidget& widget() const { return widget_; }

private:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void takeFocus();

    QWidget& widget_;
    /// Has the focus when no control has; not reached by the tabulator.
    QPointer<QWidget> noControl_;
    std::map<const NSObject*, QPointer<QWidget>> controls_;
    std::vector<std::shared_ptr<QtTextField>> fields_;
    Action willClose_;
    bool isHeldBack_ = false;
    bool isWaiting_ = false;
};

} // namespace vistrane
