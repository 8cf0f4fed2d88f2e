#pragma once

#include <memory>

#include <QMenuBar>
#include <QPointer>
#include <QWidget>

namespace vistrane {

/// A window's menu bar, out of sight until this is destroyed. The shortcuts of its menus go on
/// working meanwhile. Does not outlive the QApplication.
class HiddenMenuBar {
public:
    explicit HiddenMenuBar(QMenuBar& menuBar);
    ~HiddenMenuBar();
    HiddenMenuBar(const HiddenMenuBar&) = delete;
    HiddenMenuBar& operator=(const HiddenMenuBar&) = delete;

    /// Null when the window is gone.
    QMenuBar* menuBar() const;

private:
    QPointer<QMenuBar> menuBar_;
    bool native_;
    bool hidden_;
    /// An empty visible widget of the window that holds the actions: those of a hidden menu bar
    /// answer no keys.
    QPointer<QWidget> shortcuts_;
};

} // namespace vistrane
