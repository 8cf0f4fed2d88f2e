#include "backends/qt/controls/QtProgressIndicator.h"

namespace vistrane {

namespace {

/// Coarse, because it is an estimate.
QString durationText(double seconds) {
    constexpr double minute = 60.0;
    constexpr double hour = 3600.0;
    if (seconds < 1.5 * minute) {
        constexpr double step = 5.0;
        return QStringLiteral("%1 s").arg(std::max(1.0, std::ceil(seconds / step)) * step);
    }
    return seconds < 1.5 * hour ? QStringLiteral("%1 min").arg(std::ceil(seconds / minute))
                                : QStringLiteral("%1 h").arg(std::ceil(seconds / hour));
}

} // namespace

QString progressText(double value, double maximum, double seconds) {
    // False for NaN too.
    if (!(value > 0.0 && value < maximum)) {
        return {};
    }
    QString text = QStringLiteral("%1 of %2 frames, %3 %")
                       .arg(value)
                       .arg(maximum)
                       .arg(std::floor(100.0 * value / maximum));
    // The first frames say little: the encoder is loaded, and takes some pictures in advance.
    constexpr double shortest = 2.0;
    if (seconds >= shortest) {
        text += QStringLiteral(", about %1 left")
                    .arg(durationText(seconds * (maximum - value) / value));
    }
    return text;
}

} // namespace vistrane
