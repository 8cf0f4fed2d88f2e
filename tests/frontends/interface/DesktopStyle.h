#pragma once

#include <QPalette>
#include <QProxyStyle>
#include <QStylePlugin>

namespace vistrane {

/// The style of a desktop with these colours: it gives them to the application, as a desktop's
/// theme does.
class DesktopStyle final : public QProxyStyle {
public:
    DesktopStyle() : QProxyStyle("Fusion") {}

    void polish(QPalette& palette) override { palette = colours; }
    using QProxyStyle::polish;

    static inline QPalette colours;
};

/// Makes the style known by the name "desktop": the program creates it again when the appearance
/// changes.
class DesktopStylePlugin final : public QStylePlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QStyleFactoryInterface_iid FILE "desktop_style.json")

public:
    QStyle* create(const QString&) override { return new DesktopStyle; }
};

} // namespace vistrane
