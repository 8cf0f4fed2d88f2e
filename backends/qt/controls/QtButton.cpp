#include "backends/qt/controls/QtButton.h"

#include <QThread>

#include "backends/qt/controls/QtImage.h"
#include "backends/qt/controls/shown_text.h"

namespace vistrane {

QtButton::QtButton(QAbstractButton& widget)
    : widget_(&widget), shortcut_(widget.shortcut()), mnemonic_(mnemonicOf(widget.text())),
      state_(NSControlStateValueOff), enabled_(widget.isEnabled()) {
    setTitle(withoutMarks(widget.text()).toStdString());
    QObject::connect(&widget, &QAbstractButton::clicked, &mainThread_, [this] { click(); });
    QObject::connect(&widget, &QAbstractButton::pressed, &mainThread_, [this] { showImage(); });
    QObject::connect(&widget, &QAbstractButton::released, &mainThread_, [this] { showImage(); });
}

void QtButton::setTitle(const std::string& title) {
    title_ = title;
    if (!widget_) {
        return;
    }
    widget_->setText(withMnemonic(shownText(title), mnemonic_));
    // Setting the text resets the shortcut.
    widget_->setShortcut(shortcut_);
}

NSInteger QtButton::state() const {
    if (widget_ && widget_->isCheckable()) {
        return widget_->isChecked() ? NSControlStateValueOn : NSControlStateValueOff;
    }
    return state_;
}

void QtButton::setState(NSInteger state) {
    state_ = state == NSControlStateValueOff ? NSControlStateValueOff : NSControlStateValueOn;
    if (widget_) {
        widget_->setChecked(state_ == NSControlStateValueOn);
    }
}

void QtButton::setEnabled(bool enabled) {
    enabled_ = enabled;
    const auto follow = [this] {
        if (widget_) {
            widget_->setEnabled(enabled_);
        }
    };
    const bool isMainThread = QThread::currentThread() == mainThread_.thread();
    QMetaObject::invokeMethod(&mainThread_, follow,
                              isMainThread ? Qt::DirectConnection : Qt::QueuedConnection);
}

void QtButton::setImage(std::shared_ptr<NSImage> image) {
    image_ = std::move(image);
    showImage();
}

void QtButton::setAlternateImage(std::shared_ptr<NSImage> image) {
    alternateImage_ = std::move(image);
    showImage();
}

void QtButton::click() {
    if (enabled_) {
        action_.send(this);
    }
}

void QtButton::showImage() {
    if (widget_) {
        const bool isAlternate = widget_->isDown() && alternateImage_;
        const std::shared_ptr<NSImage>& image = isAlternate ? alternateImage_ : image_;
        widget_->setIcon(image ? iconOf(*image) : QIcon());
    }
}

} // namespace vistrane
