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

/// A button on a widget. The title is kept byte for byte beside the text that is shown.
///
/// The state of a checkable button is what the user sees. That of any other button is only kept:
/// the program sets it on at each click, and the button must not keep looking pressed.
///
/// The widget's initial shortcut works with every title. When it comes from a mnemonic in the
/// widget's text, the same letter is underlined in each title that has it.
class QtButton final : public NSButton {
public:
    /// Takes the title and state that the widget has.
    explicit QtButton(QAbstractButton& widget);

    std::string title() const override { return title_; }
    void setTitle(const std::string& title) override;
    NSInteger state() const override;
    void setState(NSInteger state) override;
    /// Any thread. When called on another thread than the main one, the widget follows later, but a
    /// disabled button stops sending its action at once.
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
    /// Null without a mnemonic.
    QChar mnemonic_;
    std::string title_;
    NSInteger state_;
    std::atomic<bool> enabled_;
    std::shared_ptr<NSImage> image_;
    std::shared_ptr<NSImage> alternateImage_;
    Action action_;
    /// Lives in the main thread; receives calls from other threads.
    QObject mainThread_;
};

} // namespace vistrane
