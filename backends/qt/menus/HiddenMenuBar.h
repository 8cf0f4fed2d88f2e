#pragma once

#include <memory>

#include <QMenuBar>
#include <QPointer>
#include <QWidget>

namespace vistrane {

/// Hides a window's menu bar while this object exists. The menus' shortcuts keep working. Must not
/// outlive the QApplication.
class HiddenMenuBar {
public:
    explicit HiddenMenuBar(QMenuBar& menuBar);
    ~HiddenMenuBar();
    HiddenMenuBar(const HiddenMenuBar&) = delete;
    HiddenMenuBar& operator=(const HiddenMenuBar&) = delete;

    /// Null once the window is destroyed.
    QMenuBar* menuBar() const;

private:
    QPointer<QMenuBar> menuBar_;
    bool native_;
    bool hidden_;
    /// An empty visible widget that holds the actions, because the shortcuts of a hidden menu bar
    /// do not work.
    QPointer<QWidget> shortcuts_;
};

} // namespace vistrane
