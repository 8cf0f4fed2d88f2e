#include "platform/qt/system/AlertDialog.h"

#include <QAccessible>
#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include "platform/qt/system/dialog_text.h"

namespace vistrane {

namespace {

constexpr int pictureSize = 64;
constexpr int textWidth = 420;

/// A title is shown as it is: nothing in it is a mnemonic.
QString buttonTitle(const std::string& title) {
    return dialogText(title).replace('&', "&&");
}

QLabel* makeLabel(const QString& text, QWidget* parent) {
    auto* const label = new QLabel(text, parent);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setMinimumWidth(textWidth);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

int escapeButtonOf(const AlertContents& contents) {
    for (std::size_t number = 0; number < contents.buttons.size(); ++number) {
        if (dialogText(contents.buttons[number]).compare("cancel", Qt::CaseInsensitive) == 0) {
            return static_cast<int>(number);
        }
    }
    return static_cast<int>(contents.buttons.size()) - 1;
}

} // namespace

AlertDialog::AlertDialog(const AlertContents& contents, QWidget* accessory, QWidget* parent)
    : QDialog(parent), escapeButton_(escapeButtonOf(contents)), accessory_(accessory) {
    setObjectName("alert");
    setWindowTitle(dialogText(contents.title));
    setAccessibleName(dialogText(contents.message));
    setAccessibleDescription(dialogText(contents.informative).trimmed());

    auto* const columns = new QHBoxLayout;
    columns->setSpacing(20);
    columns->addWidget(makePicture(), 0, Qt::AlignTop);
    columns->addWidget(makeTexts(contents), 1);

    auto* const rows = new QVBoxLayout(this);
    rows->setContentsMargins(24, 24, 24, 20);
    rows->setSpacing(20);
    rows->setSizeConstraint(QLayout::SetFixedSize);
    rows->addLayout(columns);
    if (accessory_) {
        accessoryHome_ = accessory_->parentWidget();
        rows->addWidget(accessory_, 0, Qt::AlignHCenter);
        accessory_->show();
    }
    rows->addWidget(makeButtons(contents));
}

AlertDialog::~AlertDialog() {
    returnAccessory();
}

QWidget* AlertDialog::makePicture() {
    auto* const label = new QLabel(this);
    const QIcon own = QApplication::windowIcon();
    const QIcon icon =
        own.isNull() ? style()->standardIcon(QStyle::SP_MessageBoxInformation, nullptr, this) : own;
    label->setPixmap(icon.pixmap(QSize(pictureSize, pictureSize), devicePixelRatioF()));
    return label;
}

QWidget* AlertDialog::makeTexts(const AlertContents& contents) {
    auto* const texts = new QWidget(this);
    auto* const rows = new QVBoxLayout(texts);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(10);
    QLabel* const message = makeLabel(dialogText(contents.message), texts);
    message->setObjectName("message");
    QFont bold = message->font();
    bold.setBold(true);
    message->setFont(bold);
    rows->addWidget(message);
    // Texts end in a newline of their own, which would only be an empty line here.
    QLabel* const informative = makeLabel(dialogText(contents.informative).trimmed(), texts);
    informative->setObjectName("informative");
    rows->addWidget(informative);
    rows->addStretch();
    return texts;
}

QWidget* AlertDialog::makeButtons(const AlertContents& contents) {
    auto* const row = new QWidget(this);
    auto* const columns = new QHBoxLayout(row);
    columns->setContentsMargins(0, 0, 0, 0);
    columns->addStretch();
    for (std::size_t number = 0; number < contents.buttons.size(); ++number) {
        const int result = static_cast<int>(number);
        auto* const button = new QPushButton(buttonTitle(contents.buttons[number]), row);
        button->setObjectName("button" + QString::number(result));
        button->setDefault(number == 0);
        connect(button, &QPushButton::clicked, this, [this, result] { done(result); });
        columns->addWidget(button);
        if (number == 0) {
            button->setFocus();
        }
    }
    return row;
}

void AlertDialog::reject() {
    done(escapeButton_);
}

void AlertDialog::done(int result) {
    returnAccessory();
    QDialog::done(result);
}

void AlertDialog::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

void AlertDialog::returnAccessory() {
    if (accessory_) {
        accessory_->hide();
        accessory_->setParent(accessoryHome_);
        accessory_ = nullptr;
    }
}

} // namespace vistrane
