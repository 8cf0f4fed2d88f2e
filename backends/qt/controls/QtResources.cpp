#include "backends/qt/controls/QtResources.h"

#include <algorithm>
#include <array>
#include <utility>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>

#include "backends/qt/controls/QtImage.h"

// Outside of any namespace, as the macro requires. Without it the linker would drop the pictures
// from the static library.
static void registerPictures() {
    Q_INIT_RESOURCE(interface);
}

namespace vistrane {

namespace {

const QString& folder() {
    static const QString path = QStringLiteral(":/pictures/");
    return path;
}

/// The resource's path; empty if there is none.
QString pathOf(const QString& name) {
    if (name.isEmpty() || name.contains(u'/')) {
        return {};
    }
    const QString stem = QFileInfo(name).completeBaseName();
    const std::array candidates{name, name + QStringLiteral(".svg"), name + QStringLiteral(".png"),
                                stem + QStringLiteral(".svg")};
    const auto* const found =
        std::find_if(candidates.begin(), candidates.end(), [](const QString& candidate) {
            return QFileInfo(folder() + candidate).isFile();
        });
    return found == candidates.end() ? QString() : folder() + *found;
}

std::shared_ptr<NSImage> vectorPicture(const QString& path) {
    auto renderer = std::make_shared<QSvgRenderer>(path);
    if (!renderer->isValid() || renderer->viewBoxF().isEmpty()) {
        return nullptr;
    }
    return std::make_shared<QtImage>(std::move(renderer));
}

std::shared_ptr<NSImage> pixelPicture(const QString& path) {
    QImage pixels = QImageReader(path).read();
    return pixels.isNull() ? nullptr : std::make_shared<QtImage>(std::move(pixels));
}

} // namespace

QtResources::QtResources() {
    registerPictures();
}

std::shared_ptr<NSImage> QtResources::imageNamed(const std::string& name) const {
    const QString path = pathOf(QString::fromStdString(name));
    if (path.isEmpty()) {
        return nullptr;
    }
    return path.endsWith(QStringLiteral(".svg")) ? vectorPicture(path) : pixelPicture(path);
}

} // namespace vistrane
