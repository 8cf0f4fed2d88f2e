#include <QPainter>
#include <gmock/gmock.h>

#include "backends/pictures/graphics_state.h"
#include "backends/qt/controls/QtGraphicsContext.h"
#include "backends/qt/controls/QtImage.h"
#include "backends/qt/controls/QtResources.h"

namespace vistrane {
namespace {

class QtResourcesTest : public ::testing::Test {
protected:
    QtResources resources_;
};

TEST_F(QtResourcesTest, ThePicturesOfTheProgramAreThereWithAnyEnding) {
    for (const char* name : {"play1", "play2", "play1-s", "play2-s", "12", "autostart", "vistrane",
                             "play1.svg", "play1.png"}) {
        const auto image = resources_.imageNamed(name);
        ASSERT_NE(image, nullptr) << name;
        EXPECT_GT(image->size().width, 0.0) << name;
        EXPECT_GT(image->size().height, 0.0) << name;
    }
}

TEST_F(QtResourcesTest, AnUnknownNameGivesNull) {
    for (const char* name : {"", ".", "..", "play", "play1/", "../pictures/play1", "\xff"}) {
        EXPECT_EQ(resources_.imageNamed(name), nullptr) << name;
    }
}

TEST_F(QtResourcesTest, AnIconIsSharpAtEverySize) {
    const QIcon icon = iconOf(*resources_.imageNamed("play1"));
    for (const int side : {16, 64, 512}) {
        EXPECT_EQ(icon.pixmap(QSize(side, side)).size(), QSize(side, side));
    }
    // Drawn from vectors, not scaled up.
    const QImage large = icon.pixmap(QSize(512, 512)).toImage();
    const QImage stretched = icon.pixmap(QSize(16, 16))
                                 .toImage()
                                 .scaled(512, 512, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    EXPECT_NE(large, stretched);
    EXPECT_NE(icon.pixmap(QSize(64, 64), QIcon::Disabled).toImage(),
              icon.pixmap(QSize(64, 64)).toImage());
}

class QtImageTest : public ::testing::Test {
protected:
    QtImageTest() : picture_(QtImage::Picture(halves())) { canvas_.fill(Qt::white); }

    ~QtImageTest() override { setCurrentGraphicsContext(nullptr); }

    /// 4 x 4, the upper half red, the lower one blue.
    static QImage halves() {
        QImage image(4, 4, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::red);
        for (int x = 0; x < 4; ++x) {
            image.setPixelColor(x, 2, Qt::blue);
            image.setPixelColor(x, 3, Qt::blue);
        }
        return image;
    }

    void draw(NSRect place, NSRect part = NSZeroRect, double fraction = 1.0) {
        QPainter painter(&canvas_);
        setCurrentGraphicsContext(std::make_shared<QtGraphicsContext>(painter, canvas_.height()));
        picture_.drawInRect(place, part, NSCompositingOperationSourceOver, fraction);
        setCurrentGraphicsContext(nullptr);
    }
    QColor colorAt(int x, int y) const { return canvas_.pixelColor(x, y); }

    static constexpr NSRect whole{{0.0, 0.0}, {40.0, 40.0}};
    QImage canvas_{40, 40, QImage::Format_RGB32};
    QtImage picture_;
};

TEST_F(QtImageTest, IsStretchedOverTheRectangleFromTheBottomLeft) {
    draw({{10.0, 0.0}, {8.0, 20.0}});
    EXPECT_EQ(colorAt(14, 22), QColor(Qt::red));
    EXPECT_EQ(colorAt(14, 38), QColor(Qt::blue));
    EXPECT_EQ(colorAt(14, 18), QColor(Qt::white));
    EXPECT_EQ(colorAt(8, 30), QColor(Qt::white));
    EXPECT_EQ(colorAt(19, 30), QColor(Qt::white));
}

TEST_F(QtImageTest, IsDrawnAtItsSizeAtAPoint) {
    QPainter painter(&canvas_);
    setCurrentGraphicsContext(std::make_shared<QtGraphicsContext>(painter, canvas_.height()));
    picture_.drawAtPoint({10.0, 10.0}, NSZeroRect, NSCompositingOperationSourceOver, 1.0);
    EXPECT_EQ(colorAt(10, 26), QColor(Qt::red));
    EXPECT_EQ(colorAt(13, 29), QColor(Qt::blue));
    EXPECT_EQ(colorAt(14, 29), QColor(Qt::white));
    EXPECT_EQ(colorAt(10, 30), QColor(Qt::white));
}

TEST_F(QtImageTest, OnlyThePartThatIsAskedForIsDrawn) {
    draw(whole, {{0.0, 0.0}, {4.0, 2.0}});
    EXPECT_EQ(colorAt(20, 10), QColor(Qt::blue));
    EXPECT_EQ(colorAt(20, 38), QColor(Qt::blue));
}

TEST_F(QtImageTest, AFractionIsTheOpacity) {
    draw(whole, NSZeroRect, 0.5);
    EXPECT_NEAR(colorAt(20, 5).green(), 128, 2);
    EXPECT_EQ(colorAt(20, 5).red(), 255);
}

TEST_F(QtImageTest, WithoutAContextNothingIsDrawn) {
    picture_.drawInRect(whole, NSZeroRect, NSCompositingOperationSourceOver, 1.0);
    EXPECT_EQ(colorAt(20, 5), QColor(Qt::white));
}

} // namespace
} // namespace vistrane
