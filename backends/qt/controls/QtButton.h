#pragma once

#include <atomic>
#include <memory>
#include <string>

#include <QAbstractButton>
#include <QKeySequence>
#include <QObject>
#include <QPointer>

#include "backends/qt/controls/Action.h"
#include "platform/appkit/NSButton.h"

namespace vistrane {

/// A button on a widget. Keeps the title byte for byte in addition to the text that is shown.
///
/// A checkable button shows its state. Other buttons only store it: the program sets it on at each
/// click, and the button must not keep looking pressed.
///
/// The widget's initial shortcut works with every title. If it comes from a mnemonic in the
/// widget's text, the same letter is underlined in each title that contains it.
class QtButton final : public NSButton {
public:
    /// Takes over the widget's title and state.
    explicit QtButton(QAbstractButton& widget);

    std::string title() const override { return title_; }
    void setTitle(const std::string& title) override;
    NSInteger state() const override;
    void setState(NSInteger state) override;
    /// Any thread. On a thread other than the main thread, the widget changes later, but a disabled
    /// button stops sending its action immediately.
    void setEnabled(bool enabled) override;
    void setImage(std::shared_ptr<NSImage> image) override;
    /// Shown while the button is pressed.
    void setAlternateImage(std::shared_ptr<NSImage> image) override;

    void setAction(NSAction action) { action_.set(std::move(action)); }

private:
    void click();
    void showImage();

    QPointer<QAbstractButton> widget_;
    QKeySequence shortcut_;
    /// Null if there is no mnemonic.
    QChar mnemonic_;
    std::string title_;
    NSInteger state_;
    std::atomic<bool> enabled_;
    std::shared_ptr<NSImage> image_;
    std::shared_ptr<NSImage> alternateImage_;
    Action action_;
    /// Lives in the main thread and receives calls from other threads.
    QObject mainThread_;
};

} // namespace vistrane
