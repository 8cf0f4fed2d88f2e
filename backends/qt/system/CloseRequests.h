#pragma once

#include <functional>

#include <QAbstractNativeEventFilter>
#include <QPointer>
#include <QWidget>

namespace vistrane {

/// Sees the user ask, through the window manager, that a window be closed, also while a modal
/// dialog stands in front of it: Qt drops such requests then. On X11 only; elsewhere the dialog is
/// to be answered first. Main thread only.
class CloseRequests final : public QAbstractNativeEventFilter {
public:
    /// `asked` is called from the event loop and may end the process.
    CloseRequests(QWidget& window, std::function<void()> asked);
    ~CloseRequests() override;

    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

private:
    const QPointer<QWidget> window_;
    const std::function<void()> asked_;
};

} // namespace vistrane
