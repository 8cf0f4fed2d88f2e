#include "backends/qt/system/AlertDialog.h"

#include <algorithm>

#include <QAccessible>
#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>
#include <QVBoxLayout>

#include "backends/qt/system/AlertText.h"

namespace vistrane {

namespace {

constexpr int pictureSize = 64;
constexpr int textWidth = 420;
constexpr int margin = 24;
constexpr int space = 20;

/// Room on the screen for the window's frame and title.
constexpr int frameWidth = 16;
constexpr int frameHeight = 64;

/// No character of the title becomes a mnemonic.
QString buttonTitle(const std::string& title) {
    return QString::fromStdString(title).replace('&', "&&");
}

int escapeButtonOf(const AlertContents& contents) {
    for (std::size_t number = 0; number < contents.buttons.size(); ++number) {
        if (QString::fromStdString(contents.buttons[number])
                .compare("cancel", Qt::CaseInsensitive) == 0) {
            return static_cast<int>(number);
        }
    }
    return static_cast<int>(contents.buttons.size()) - 1;
}

} // namespace

AlertDialog::AlertDialog(const AlertContents& contents, QWidget* accessory, QWidget* parent)
    : QDialog(parent), escapeButton_(escapeButtonOf(contents)), accessory_(accessory) {
    setObjectName("alert");
    setWindowTitle("Vistrane");
    setAccessibleName(QString::fromStdString(contents.message));
    setAccessibleDescription(QString::fromStdString(contents.informative).trimmed());

    auto* const columns = new QHBoxLayout;
    columns->setSpacing(space);
    columns->addWidget(makePicture(), 0, Qt::AlignTop);
    QScrollArea* const texts = makeTexts(contents);
    columns->addWidget(texts, 1, Qt::AlignTop);

    auto* const rows = new QVBoxLayout(this);
    rows->setContentsMargins(margin, margin, margin, space);
    rows->setSpacing(space);
    rows->setSizeConstraint(QLayout::SetFixedSize);
    rows->addLayout(columns);
    if (accessory_) {
        accessoryHome_ = accessory_->parentWidget();
        rows->addWidget(accessory_, 0, Qt::AlignHCenter);
        accessory_->show();
    }
    rows->addWidget(makeButtons(contents));
    fitHeight(*texts, rows->sizeHint().height() - texts->height());
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

QSize AlertDialog::available() const {
    const QWidget* const asked = parentWidget() == nullptr ? this : parentWidget();
    return asked->screen()->availableSize() - QSize(frameWidth, frameHeight);
}

QScrollArea* AlertDialog::makeTexts(const AlertContents& contents) {
    auto* const area = new QScrollArea(this);
    area->setObjectName("texts");
    area->setFrameShape(QFrame::NoFrame);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setFocusPolicy(Qt::NoFocus);
    const int beside = 2 * margin + pictureSize + space;
    const int width = std::min(textWidth, available().width() - beside);

    auto* const texts = new QWidget;
    auto* const rows = new QVBoxLayout(texts);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(10);
    QFont bold = font();
    bold.setBold(true);
    auto* const message =
        new AlertText(QString::fromStdString(contents.message), bold, width, texts);
    message->setObjectName("message");
    rows->addWidget(message);
    // Some texts end with a newline, which would be an empty line here.
    const QString rest = QString::fromStdString(contents.informative).trimmed();
    if (!rest.isEmpty()) {
        auto* const informative = new AlertText(rest, font(), width, texts);
        informative->setObjectName("informative");
        rows->addWidget(informative);
    }
    area->setWidget(texts);
    texts->setAutoFillBackground(false);
    area->viewport()->setAutoFillBackground(false);
    area->setFixedSize(rows->sizeHint());
    return area;
}

void AlertDialog::fitHeight(QScrollArea& texts, int others) {
    const int most = std::max(available().height() - others, pictureSize);
    if (texts.height() <= most) {
        return;
    }
    // Focusable, so that the keyboard can scroll it.
    texts.setFocusPolicy(Qt::TabFocus);
    texts.setFixedSize(texts.width() + texts.verticalScrollBar()->sizeHint().width(), most);
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
