#pragma once

#include <functional>

#include <QDBusVariant>
#include <QObject>
#include <QString>

#include "backends/qt/system/Appearance.h"

namespace vistrane {

/// The portal's colour scheme. Its methods and signals are those of
/// org.freedesktop.portal.Settings.
class Appearance::Portal final : public QObject {
    Q_OBJECT

public:
    enum Scheme { noPreference = 0, dark = 1, light = 2 };

    /// `changed` is called when `scheme` changes after the constructor.
    explicit Portal(std::function<void()> changed);

    Scheme scheme() const { return scheme_; }

private slots:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    void askAgain();
    void take(const QVariant& value);

    std::function<void()> changed_;
    Scheme scheme_ = noPreference;
};

} // namespace vistrane
