#pragma once

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

/// A window on a widget that outlives it.
class QtWindow final : public NSWindow, private QObject {
public:
    explicit QtWindow(QWidget& widget);

    /// A control whose editing the window ends.
    void addField(std::shared_ptr<QtTextField> field) { fields_.push_back(std::move(field)); }

    /// Ends editing in every field. No control has the focus afterwards, so that typing changes no
    /// field; the tab key continues from the control that had it.
    bool makeFirstResponder(NSObject* responder) override;
    /// Shows the window, even if it is minimised. While showing is delayed, it appears later.
    void makeKeyAndOrderFront(NSObject* sender) override;
    void setTitle(const std::string& title) override;
    /// Does nothing: title bars belong to the window manager.
    void setTitlebarAppearsTransparent(bool) override {}

    /// Sent to the window's delegate whenever the window closes.
    void setWillCloseAction(NSAction action) { willClose_.set(std::move(action)); }

    /// Delays showing the window. At the end of the delay, it is shown if that was requested
    /// meanwhile.
    void setHeldBack(bool isHeldBack);

    QWidget& widget() const { return widget_; }

private:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void takeFocus();

    QWidget& widget_;
    /// Has the focus if no control has it. The tab key skips it.
    QPointer<QWidget> noControl_;
    std::vector<std::shared_ptr<QtTextField>> fields_;
    Action willClose_;
    bool isHeldBack_ = false;
    bool isWaiting_ = false;
};

} // namespace vistrane
