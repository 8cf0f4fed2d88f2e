#include <algorithm>
#include <optional>

#include "backends/cameras/MediaPreviewLayer.h"
#include "backends/pictures/MediaImage.h"
#include "backends/qt/controls/QtImage.h"
#include "backends/qt/controls/QtResources.h"
#include "platform/appkit/NSColor.h"
#include "tests/backends/qt/controls/ControlWidgets.h"

namespace vistrane {
namespace {

/// One colour; counts how often it is decoded.
class PlainPicture final : public PictureSource {
public:
    PlainPicture(std::uint32_t width, std::uint32_t height, bool isDamaged = false)
        : PictureSource({width, height, {}, false}, "plain"), isDamaged_(isDamaged) {}

    std::optional<NSError> readPixels(PixelForm form, std::uint8_t* rows,
                                      std::ptrdiff_t stride) const override {
        ++decoded_;
        for (std::uint32_t row = 0; row < shape().height; ++row) {
            std::fill_n(rows + row * stride, shape().width * bytesPerPixel(form),
                        std::uint8_t{255});
        }
        return isDamaged_ ? std::optional(NSError{}) : std::nullopt;
    }

    mutable int decoded_ = 0;

private:
    bool isDamaged_;
};

class QtImageViewTest : public ::testing::Test {
protected:
    QtImageViewTest() {
        place_.resize(200, 100);
        view_.setWantsLayer(true);
        view_.layer()->setBackgroundColor(NSColor::blackColor().CGColor);
    }

    std::shared_ptr<PlainPicture> show(std::uint32_t width, std::uint32_t height,
                                       bool isDamaged = false) {
        auto picture = std::make_shared<PlainPicture>(width, height, isDamaged);
        view_.setImage(std::make_shared<MediaImage>(picture));
        return picture;
    }
    QColor colorAt(int x, int y) { return place_.grab().toImage().pixelColor(x, y); }
    bool isBlack(int x, int y) { return colorAt(x, y) == QColor(Qt::black); }
    bool isWhite(int x, int y) { return colorAt(x, y) == QColor(Qt::white); }

    PictureWidget place_;
    QtImageView view_{place_};
};

TEST_F(QtImageViewTest, TheLayersBackgroundShowsAroundThePicture) {
    EXPECT_TRUE(isBlack(100, 50));
    // The place is twice as wide as high, the picture half as wide: it takes the middle quarter.
    show(50, 100);
    EXPECT_TRUE(isWhite(100, 50));
    EXPECT_TRUE(isWhite(77, 50));
    EXPECT_TRUE(isBlack(72, 50));
    EXPECT_TRUE(isWhite(122, 50));
    EXPECT_TRUE(isBlack(127, 50));
}

TEST_F(QtImageViewTest, LargeAndSmallPicturesFillThePlaceAsFarAsTheirShapeAllows) {
    for (const std::uint32_t width : {8u, 1600u}) {
        show(width, width / 4);
        EXPECT_TRUE(isWhite(3, 50));
        EXPECT_TRUE(isWhite(197, 50));
        EXPECT_TRUE(isBlack(100, 22));
        EXPECT_TRUE(isBlack(100, 78));
    }
    place_.resize(100, 300);
    EXPECT_TRUE(isWhite(50, 150));
    EXPECT_TRUE(isBlack(50, 134));
    EXPECT_TRUE(isBlack(50, 166));
}

TEST_F(QtImageViewTest, APictureIsDecodedOnceForHoweverManyPaintings) {
    const auto picture = show(64, 64);
    EXPECT_EQ(picture->decoded_, 0);
    place_.grab();
    place_.grab();
    place_.resize(300, 300);
    place_.grab();
    EXPECT_EQ(picture->decoded_, 1);
}

TEST_F(QtImageViewTest, ALargePictureIsDecodedOnceMoreForOtherSizes) {
    const auto picture = show(800, 400);
    place_.grab();
    EXPECT_TRUE(isWhite(100, 50));
    EXPECT_EQ(picture->decoded_, 1);
    for (const int side : {150, 300, 100}) {
        place_.resize(side, side);
        EXPECT_TRUE(isWhite(side / 2, side / 2));
        EXPECT_TRUE(isWhite(2, side / 2));
        EXPECT_TRUE(isBlack(side / 2, side / 5));
        EXPECT_EQ(picture->decoded_, 2);
    }
}

TEST_F(QtImageViewTest, ALargePictureThatIsShownAgainIsNotDecodedAgain) {
    const auto picture = show(800, 400);
    place_.grab();
    view_.setImage(std::make_shared<MediaImage>(picture));
    EXPECT_TRUE(isWhite(100, 50));
    EXPECT_EQ(picture->decoded_, 1);
    view_.setImage(nullptr);
    EXPECT_TRUE(isBlack(100, 50));
    view_.setImage(std::make_shared<MediaImage>(picture));
    EXPECT_TRUE(isWhite(100, 50));
    EXPECT_EQ(picture->decoded_, 2);
}

TEST_F(QtImageViewTest, APictureThatIsReplacedBeforeItIsSeenIsNeverDecoded) {
    const auto first = show(64, 64);
    const auto second = show(64, 64);
    place_.grab();
    EXPECT_EQ(first->decoded_, 0);
    EXPECT_EQ(second->decoded_, 1);
}

TEST_F(QtImageViewTest, ADamagedPictureIsNoPictureAndIsTriedOnce) {
    for (const std::uint32_t width : {64u, 800u}) {
        const auto picture = show(width, width / 2, true);
        EXPECT_TRUE(isBlack(100, 50));
        place_.resize(300, 300);
        EXPECT_TRUE(isBlack(100, 50));
        EXPECT_EQ(picture->decoded_, 1);
    }
}

TEST_F(QtImageViewTest, APictureOfTheProgramsResourcesShowsInItsShape) {
    QImage pixels(50, 100, QImage::Format_RGB32);
    pixels.fill(Qt::red);
    view_.setImage(std::make_shared<QtImage>(pixels));
    EXPECT_EQ(colorAt(100, 50), QColor(Qt::red));
    EXPECT_TRUE(isBlack(127, 50));
    const QtResources resources;
    view_.setImage(resources.imageNamed("vistrane"));
    EXPECT_NE(colorAt(100, 50), QColor(Qt::red));
    EXPECT_FALSE(isBlack(100, 50));
    EXPECT_TRUE(isBlack(47, 50));
}

TEST_F(QtImageViewTest, NoPictureEmptiesThePlace) {
    show(64, 64);
    place_.grab();
    view_.setImage(nullptr);
    EXPECT_TRUE(isBlack(100, 50));
}

TEST_F(QtImageViewTest, ANoticeIsShownWhereThereIsNoPictureUntilAFrameComes) {
    QImage frame(10, 10, QImage::Format_RGB32);
    frame.fill(Qt::white);
    place_.setAccessibleDescription("usual");
    place_.setFrame(frame);
    place_.setFrame({});
    const QImage empty = place_.grab().toImage();
    place_.setNotice("gone");
    EXPECT_NE(place_.grab().toImage(), empty);
    EXPECT_EQ(place_.accessibleDescription(), "gone");
    place_.setNotice("back");
    EXPECT_EQ(place_.accessibleDescription(), "back");
    place_.setFrame({});
    EXPECT_NE(place_.grab().toImage(), empty);
    place_.setFrame(frame);
    EXPECT_EQ(place_.accessibleDescription(), "usual");
    place_.setFrame({});
    EXPECT_EQ(place_.grab().toImage(), empty);
}

TEST_F(QtImageViewTest, TheHintGoesForGoodWithTheFirstPictureReadableOrNot) {
    const QImage bare = place_.grab().toImage();
    place_.setProperty("hint", "Frames appear here");
    EXPECT_NE(place_.grab().toImage(), bare);
    show(64, 64, true);
    EXPECT_EQ(place_.grab().toImage(), bare);
    view_.setImage(nullptr);
    EXPECT_EQ(place_.grab().toImage(), bare);

    PictureWidget other;
    other.resize(200, 100);
    const QImage bareOther = other.grab().toImage();
    other.setProperty("hint", "Frames appear here");
    ASSERT_NE(other.grab().toImage(), bareOther);
    QtImageView(other).setImage(nullptr);
    EXPECT_EQ(other.grab().toImage(), bareOther);
}

TEST_F(QtImageViewTest, WithoutAWantedLayerThereIsNoBackground) {
    view_.setWantsLayer(false);
    EXPECT_EQ(view_.layer(), nullptr);
    EXPECT_FALSE(isBlack(100, 50));
}

TEST_F(QtImageViewTest, TheBoundsAreThoseOfTheWidget) {
    EXPECT_EQ(view_.bounds(), (NSRect{{0.0, 0.0}, {200.0, 100.0}}));
}

class LivePictureTest : public QtImageViewTest {
protected:
    LivePictureTest() { view_.layer()->addSublayer(preview_); }
    ~LivePictureTest() override { view_.setWantsLayer(false); }

    /// One colour, 64 x 32.
    PreviewPicture picture(std::uint8_t blue, std::uint8_t green, std::uint8_t red) {
        constexpr std::size_t stride = 64 * 4 + 16;
        const auto bytes = std::make_shared<std::vector<std::uint8_t>>();
        while (bytes->size() < stride * 32) {
            bytes->insert(bytes->end(), {blue, green, red, 0});
        }
        return {std::shared_ptr<const std::uint8_t>(bytes, bytes->data()), 64, 32, stride};
    }

    bool isWanted_ = false;
    std::shared_ptr<MediaPreviewLayer> preview_ =
        std::make_shared<MediaPreviewLayer>([this](bool wanted) { isWanted_ = wanted; });
};

TEST_F(LivePictureTest, PicturesAreRequestedOnlyWhileThePlaceIsVisible) {
    EXPECT_FALSE(isWanted_);
    place_.show();
    EXPECT_TRUE(isWanted_);
    place_.hide();
    EXPECT_FALSE(isWanted_);
    place_.show();
    EXPECT_TRUE(isWanted_);
    view_.setWantsLayer(false);
    EXPECT_FALSE(isWanted_);
    place_.hide();
    EXPECT_FALSE(isWanted_);
}

TEST_F(LivePictureTest, AMinimisedWindowRequestsNone) {
    QWidget window;
    place_.setParent(&window);
    window.show();
    QApplication::processEvents();
    EXPECT_TRUE(isWanted_);
    window.showMinimized();
    QApplication::processEvents();
    EXPECT_FALSE(isWanted_);
    window.showNormal();
    QApplication::processEvents();
    EXPECT_TRUE(isWanted_);
    place_.setParent(nullptr);
}

TEST_F(LivePictureTest, TheNewestPictureIsShownAndNoBufferIsKept) {
    place_.show();
    const PreviewPicture first = picture(255, 0, 0);
    preview_->show(first);
    EXPECT_EQ(first.pixels.use_count(), 1);
    preview_->show(picture(10, 20, 200));
    EXPECT_EQ(colorAt(100, 50), QColor(200, 20, 10));
    EXPECT_EQ(colorAt(3, 50), QColor(200, 20, 10));
}

TEST_F(LivePictureTest, NoPictureAndAnOldOneLeaveThePlaceBlack) {
    place_.show();
    preview_->show(picture(255, 255, 255));
    preview_->show({});
    EXPECT_TRUE(isBlack(100, 50));
    preview_->show(picture(255, 255, 255));
    EXPECT_TRUE(isWhite(100, 50));
    place_.hide();
    place_.show();
    EXPECT_TRUE(isBlack(100, 50));
}

} // namespace
} // namespace vistrane
