#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <QObject>
#include <QWidget>

#include "platform/appkit/NSWindow.h"
#include "platform/qt/controls/Action.h"
#include "platform/qt/controls/QtTextField.h"

namespace vistrane {

/// A window on a widget that outlives it, with the fields whose edits it ends.
class QtWindow final : public NSWindow, private QObject {
public:
    explicit QtWindow(QWidget& widget);

    void addField(std::shared_ptr<QtTextField> field) { fields_.push_back(std::move(field)); }

    /// Ends every edit. The keyboard stays where it is: who works without a mouse is not sent
    /// back to the first control.
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

    QWidget& widget_;
    std::vector<std::shared_ptr<QtTextField>> fields_;
    Action willClose_;
    bool isHeldBack_ = false;
    bool isWaiting_ = false;
};

} // namespace vistrane
