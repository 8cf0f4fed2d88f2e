#include "backends/qt/system/Appearance.h"

#include <cstdlib>
#include <utility>

#include <QApplication>
#include <QEvent>
#include <QMetaObject>
#include <QPalette>
#include <QProgressBar>
#include <QProxyStyle>
#include <QStyle>
#include <QStyleFactory>

#include "backends/qt/system/AppearancePortal.h"

namespace vistrane {

namespace {

bool isDarkPalette(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() <
           palette.color(QPalette::WindowText).lightness();
}

void setDimmed(QPalette& palette, const QColor& dimmed) {
    palette.setColor(QPalette::PlaceholderText, dimmed);
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, dimmed);
    }
}

QPalette darkPalette() {
    const QColor window(0x29, 0x29, 0x2b);
    const QColor text(0xec, 0xec, 0xee);
    const QColor dimmed(0x94, 0x94, 0x98);
    // Lighter than the window. By default, the style's outlines would be darker, and boxes and
    // fields invisible.
    const QColor base(0x5a, 0x5a, 0x60);
    const QColor highlight(0x3d, 0x7d, 0xd8);
    QPalette palette(text, QColor(0x3a, 0x3a, 0x3d), QColor(0x58, 0x58, 0x5c),
                     QColor(0x18, 0x18, 0x1a), QColor(0x28, 0x28, 0x2a), text, Qt::white, base,
                     window);
    palette.setColor(QPalette::AlternateBase, QColor(0x52, 0x52, 0x58));
    palette.setColor(QPalette::ToolTipBase, QColor(0x3a, 0x3a, 0x3d));
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::Link, QColor(0x6c, 0xa8, 0xf2));
    palette.setColor(QPalette::LinkVisited, QColor(0xb0, 0x90, 0xe0));
    palette.setColor(QPalette::Highlight, highlight);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    setDimmed(palette, dimmed);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, QColor(0x4a, 0x4a, 0x4e));
    palette.setColor(QPalette::Disabled, QPalette::HighlightedText, dimmed);
    return palette;
}

/// With the colour of fields, an empty bar would look like a full one.
QPalette darkBarColours() {
    QPalette palette;
    palette.setColor(QPalette::Base, QColor(0x36, 0x36, 0x39));
    return palette;
}

QPalette lightPalette() {
    const QColor window(0xf4, 0xf4, 0xf5);
    const QColor text(0x1e, 0x1e, 0x20);
    QPalette palette(text, QColor(0xfa, 0xfa, 0xfb), Qt::white, QColor(0xa6, 0xa6, 0xaa),
                     QColor(0xc8, 0xc8, 0xcc), text, Qt::white, Qt::white, window);
    palette.setColor(QPalette::Highlight, QColor(0x2f, 0x6f, 0xcf));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    setDimmed(palette, QColor(0x8e, 0x8e, 0x93));
    return palette;
}

/// The application's style and palette before the program changed them.
struct DesktopLook {
    QString style = QApplication::style()->objectName();
    QPalette palette = QApplication::palette();
};

DesktopLook& desktopLook() {
    static DesktopLook look;
    return look;
}

} // namespace

/// Calls `changed`, from the event loop, after the application's palette has changed.
class Appearance::PaletteWatch final : public QObject {
public:
    explicit PaletteWatch(std::function<void()> changed) : changed_(std::move(changed)) {
        QCoreApplication::instance()->installEventFilter(this);
    }

private:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::ApplicationPaletteChange && watched == qApp) {
            QMetaObject::invokeMethod(this, changed_, Qt::QueuedConnection);
        }
        return QObject::eventFilter(watched, event);
    }

    std::function<void()> changed_;
};

Appearance::Appearance() : paletteIsDark_(isDarkPalette(desktopLook().palette)) {
    portal_ = std::make_unique<Portal>([this] {
        if (changed_) {
            changed_();
        }
    });
    paletteWatch_ = std::make_unique<PaletteWatch>([this] { paletteChanged(); });
}

void Appearance::paletteChanged() {
    // With a preference of the portal the palette may be the program's own.
    const QPalette palette = QApplication::palette();
    if (portal_->scheme() != Portal::noPreference || isDarkPalette(palette) == paletteIsDark_) {
        return;
    }
    paletteIsDark_ = !paletteIsDark_;
    desktopLook().palette = palette;
    if (changed_) {
        changed_();
    }
}

Appearance::~Appearance() = default;

bool Appearance::isDark() const {
    return portal_->scheme() == Portal::dark ||
           (portal_->scheme() == Portal::noPreference && paletteIsDark_);
}

std::optional<std::string> Appearance::interfaceStyle() const {
    return isDark() ? std::optional<std::string>("Dark") : std::nullopt;
}

void Appearance::setChangeHandler(std::function<void()> handler) {
    changed_ = std::move(handler);
}

QPalette ownPalette(bool isDark) {
    return isDark ? darkPalette() : lightPalette();
}

void separateFields() {
    QPalette palette = QApplication::palette();
    const int window = palette.color(QPalette::Window).lightness();
    constexpr int leastDifference = 16;
    constexpr int darkest = 24;
    const bool areApart =
        std::abs(palette.color(QPalette::Base).lightness() - window) >= leastDifference;
    const QStyle* const style = QApplication::style();
    const auto* const proxy = qobject_cast<const QProxyStyle*>(style);
    const QString name = (proxy != nullptr ? proxy->baseStyle() : style)->name();
    if (name == QLatin1String("fusion") && window < darkest && !areApart) {
        palette.setColor(QPalette::Base, QColor(0x48, 0x48, 0x48));
        palette.setColor(QPalette::Button, QColor(0x48, 0x48, 0x48));
        QApplication::setPalette(palette);
    }
}

void applyPalette(bool isDark) {
    const DesktopLook& desktop = desktopLook();
    QPalette barColours;
    if (isDarkPalette(desktop.palette) == isDark) {
        QApplication::setStyle(desktop.style);
        QApplication::setPalette(QPalette());
        separateFields();
    } else {
        QApplication::setStyle("Fusion");
        QApplication::setPalette(ownPalette(isDark));
        barColours = isDark ? darkBarColours() : QPalette();
    }
    for (QWidget* const widget : QApplication::allWidgets()) {
        if (qobject_cast<QProgressBar*>(widget) != nullptr) {
            widget->setPalette(barColours);
        }
    }
}

} // namespace vistrane
