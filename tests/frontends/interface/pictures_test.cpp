#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include <QColor>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QString>
#include <QSvgRenderer>
#include <QXmlStreamReader>
#include <gmock/gmock.h>

#include "core/infopanel/promotions.h"
#include "core/infopanel/tip_pages.h"

namespace vistrane {
namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::Ge;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

QString resource(const std::string& name) {
    return ":/pictures/" + QString::fromStdString(name) + ".svg";
}

QImage drawn(const std::string& name, QSize size, const QColor& background) {
    QSvgRenderer renderer(resource(name));
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(background);
    QPainter painter(&image);
    renderer.render(&painter);
    return image;
}

double linear(double value) {
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& colour) {
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

/// The contrast ratio of two colours, from 1 to 21, by WCAG 2.
double contrast(const QColor& one, const QColor& other) {
    const double first = luminance(one);
    const double second = luminance(other);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

/// The greatest contrast of any pixel with the background.
double greatestContrast(const QImage& image, const QColor& background) {
    double greatest = 1.0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            greatest = std::max(greatest, contrast(image.pixelColor(x, y), background));
        }
    }
    return greatest;
}

const QColor light("#f6f6f7");
const QColor dark("#26282c");

std::vector<std::string> allPictures() {
    std::vector<std::string> names;
    for (const QString& file : QDir(":/pictures").entryList({"*.svg"})) {
        names.push_back(file.chopped(4).toStdString());
    }
    return names;
}

/// Elements that the renderer ignores.
std::vector<std::string> elementsNotDrawn(const std::string& name) {
    QFile file(resource(name));
    if (!file.open(QIODevice::ReadOnly)) {
        return {"the file cannot be read"};
    }
    std::vector<std::string> found;
    QXmlStreamReader reader(&file);
    while (!reader.atEnd()) {
        reader.readNext();
        const QString element = reader.name().toString();
        if (reader.isStartElement() &&
            QStringList{"clipPath", "filter", "foreignObject", "mask", "pattern", "style"}.contains(
                element)) {
            found.push_back(element.toStdString());
        }
    }
    return found;
}

TEST(Pictures, EachPromotionHasAPictureOfItsName) {
    ASSERT_THAT(promotionTitles(), SizeIs(11));
    for (const std::string& title : promotionTitles()) {
        EXPECT_THAT(allPictures(), Contains(title));
    }
}

TEST(Pictures, EachTipHasAPictureForDenseScreens) {
    constexpr std::int32_t noPage = 0;
    for (std::int32_t page = noPage; page <= tipPageCount; ++page) {
        const QString path = ":/pictures/" + QString::fromStdString(tipPage(page).picture);
        const QImage picture(path);
        EXPECT_EQ(picture.size(), QSize(1360, 840)) << path.toStdString();
        EXPECT_NEAR(picture.dotsPerMeterX() * 0.0254, 144.0, 0.1) << path.toStdString();
        EXPECT_LT(QFile(path).size(), 400'000) << path.toStdString();
    }
}

TEST(Pictures, EachIsDrawnWhole) {
    ASSERT_THAT(allPictures(), Not(IsEmpty()));
    for (const std::string& name : allPictures()) {
        EXPECT_TRUE(QSvgRenderer(resource(name)).isValid()) << name;
        EXPECT_THAT(elementsNotDrawn(name), IsEmpty()) << name;
    }
}

TEST(Pictures, EachStandsOutOnLightAndOnDarkAtTheSmallestSize) {
    constexpr double graphics = 3.0;
    for (const std::string& name : allPictures()) {
        for (const QColor& background : {light, dark}) {
            const QImage image = drawn(name, {16, 16}, background);
            EXPECT_GE(greatestContrast(image, background), graphics)
                << name << " on " << background.name().toStdString();
        }
    }
}

TEST(Pictures, EachFaceOfThePlayButtonDiffersFromTheOthers) {
    const std::vector<std::string> faces{"play1", "play1-s", "play2", "play2-s"};
    for (std::size_t i = 0; i < faces.size(); ++i) {
        for (std::size_t j = i + 1; j < faces.size(); ++j) {
            EXPECT_NE(drawn(faces[i], {32, 32}, light), drawn(faces[j], {32, 32}, light))
                << faces[i] << " and " << faces[j];
        }
    }
}

TEST(Pictures, TheSymbolOfEachFaceStandsOutFromItsDisc) {
    for (const char* const name : {"play1", "play1-s", "play2", "play2-s"}) {
        const QImage image = drawn(name, {32, 32}, light);
        const QColor symbol = image.pixelColor(16, 16);
        const QColor disc = image.pixelColor(5, 16);
        EXPECT_GE(contrast(symbol, disc), 7.0) << name;
    }
}

TEST(Pictures, TheKnobFillsWhateverRectangleItGets) {
    for (const QSize size : {QSize(24, 24), QSize(10, 60), QSize(60, 10)}) {
        const QImage image = drawn("12", size, Qt::transparent);
        std::vector<int> alphas;
        for (const QPoint edge :
             {QPoint(size.width() / 2, 1), QPoint(size.width() / 2, size.height() - 2),
              QPoint(1, size.height() / 2), QPoint(size.width() - 2, size.height() / 2)}) {
            alphas.push_back(qAlpha(image.pixel(edge)));
        }
        EXPECT_THAT(alphas, Each(Ge(100))) << size.width() << " x " << size.height();
    }
}

} // namespace
} // namespace vistrane
