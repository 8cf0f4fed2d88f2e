#include "frontends/commandline/json.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace vistrane {

namespace {

QString text(const std::string& bytes) {
    return QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

std::string written(const QJsonObject& object) {
    return QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString();
}

} // namespace

std::string jsonOf(const std::string& name, const std::vector<std::string>& texts) {
    QJsonArray array;
    for (const std::string& each : texts) {
        array.append(text(each));
    }
    return written({{text(name), array}});
}

std::string jsonOf(const Session::Movie& movie) {
    QJsonArray leftOut;
    for (const CompileReport::LeftOut& each : movie.leftOut) {
        leftOut.append(QJsonObject{{"path", text(each.path)}, {"reason", text(each.reason)}});
    }
    return written({{"path", text(movie.facts.path)},
                    {"frames", static_cast<qint64>(movie.facts.frames)},
                    {"leftOut", leftOut},
                    {"width", static_cast<qint64>(movie.facts.width)},
                    {"height", static_cast<qint64>(movie.facts.height)},
                    {"duration", movie.facts.duration}});
}

} // namespace vistrane
