#include <QPainter>
#include <QProxyStyle>
#include <QStyleOptionComplex>
#include <QWheelEvent>

#include "backends/qt/controls/QtResources.h"
#include "backends/sim/Sim.h"
#include "core/preview/hidenSlidercell.h"
#include "tests/backends/qt/controls/ControlWidgets.h"

namespace vistrane {
namespace {

class QtSliderTest : public ControlTest {
protected:
    QtSliderTest() {
        slider_ = widgets_.make<QtSlider, SliderWidget>();
        slider_->setMinValue(1.0);
        slider_->setMaxValue(60.0);
        slider_->setIntegerValue(25);
        slider_->setAction(count());
        widget_ = &widgets_.widgetOf<SliderWidget>(*slider_);
        widgets_.show();
    }

    QImage picture() { return widget_->grab().toImage(); }

    std::shared_ptr<QtSlider> slider_;
    SliderWidget* widget_ = nullptr;
};

TEST_F(QtSliderTest, TheProgramsMovesSendNothing) {
    slider_->setIntegerValue(30);
    slider_->setMaxValue(10.0);
    slider_->setMinValue(5.0);
    EXPECT_EQ(sent_, 0);
    EXPECT_EQ(widget_->value(), 10);
}

TEST_F(QtSliderTest, KeysMoveInWholeStepsAndSendTheAction) {
    const std::pair<Qt::Key, int> steps[] = {
        {Qt::Key_Right, 26}, {Qt::Key_Home, 1}, {Qt::Key_End, 60}, {Qt::Key_Right, 60}};
    for (const auto& [key, value] : steps) {
        QTest::keyClick(widget_, key);
        EXPECT_EQ(slider_->intValue(), value);
    }
    // A key that moves nothing sends nothing.
    EXPECT_EQ(sent_, 3);
    EXPECT_EQ(sender_, slider_.get());
}

TEST_F(QtSliderTest, ANotchOfTheWheelIsOneStep) {
    const auto turn = [this](QPoint angle) {
        QWheelEvent wheel(QPointF(5, 5), widget_->mapToGlobal(QPointF(5, 5)), {}, angle,
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(widget_, &wheel);
        return slider_->intValue();
    };
    EXPECT_EQ(turn({0, 120}), 26);
    EXPECT_EQ(turn({0, -240}), 24);
    // A wheel without notches turns by less.
    EXPECT_EQ(turn({0, 60}), 24);
    EXPECT_EQ(turn({0, 60}), 25);
    EXPECT_EQ(turn({-120, 0}), 26);
    widget_->setProperty("downGoesForward", true);
    EXPECT_EQ(turn({0, -120}), 27);
    EXPECT_EQ(sent_, 5);
}

TEST_F(QtSliderTest, PageDownGoesForwardOnRequest) {
    const auto press = [this](Qt::Key key) {
        QTest::keyClick(widget_, key);
        return slider_->intValue();
    };
    EXPECT_LT(press(Qt::Key_PageDown), 25);
    EXPECT_EQ(press(Qt::Key_PageUp), 25);
    widget_->setProperty("downGoesForward", true);
    EXPECT_GT(press(Qt::Key_PageDown), 25);
    EXPECT_EQ(press(Qt::Key_PageUp), 25);
    EXPECT_EQ(press(Qt::Key_Down), 26);
    EXPECT_EQ(press(Qt::Key_Right), 27);
    EXPECT_EQ(press(Qt::Key_Up), 26);
    EXPECT_EQ(press(Qt::Key_Left), 25);
}

TEST_F(QtSliderTest, AWholeStepFromABrokenMinimumStaysInTheRange) {
    slider_->setMinValue(1.5);
    slider_->setMaxValue(3.0);
    slider_->setIntegerValue(0);
    EXPECT_EQ(slider_->floatValue(), 1.5F);
    QTest::keyClick(widget_, Qt::Key_End);
    EXPECT_EQ(slider_->floatValue(), 3.0F);
    EXPECT_EQ(sent_, 1);
}

TEST_F(QtSliderTest, ARangeWithoutLengthStaysAtItsValueAndSendsEachPress) {
    slider_->setMinValue(0.0);
    slider_->setMaxValue(0.0);
    QTest::keyClick(widget_, Qt::Key_Right);
    EXPECT_EQ(sent_, 0);
    QTest::mouseClick(widget_, Qt::LeftButton, {}, QPoint(widget_->width() - 5, 5));
    EXPECT_EQ(slider_->integerValue(), 0);
    EXPECT_EQ(sent_, 1);
    QTest::mouseClick(widget_, Qt::LeftButton, {}, QPoint(2, 5));
    EXPECT_EQ(sent_, 2);
}

TEST_F(QtSliderTest, APressSendsTheActionOnceWhetherItMovesOrNot) {
    const QPoint place(widget_->width() - 2, 5);
    QTest::mousePress(widget_, Qt::LeftButton, {}, place);
    EXPECT_EQ(slider_->intValue(), 60);
    EXPECT_EQ(sent_, 1);
    QTest::mouseRelease(widget_, Qt::LeftButton, {}, place);
    EXPECT_EQ(sent_, 1);
    QTest::mouseClick(widget_, Qt::LeftButton, {}, place);
    EXPECT_EQ(slider_->intValue(), 60);
    EXPECT_EQ(sent_, 2);
    EXPECT_EQ(sender_, slider_.get());
    QTest::mouseClick(widget_, Qt::RightButton, {}, place);
    EXPECT_EQ(sent_, 2);
}

TEST_F(QtSliderTest, AHugeRangeIsShownWithoutHarm) {
    slider_->setMinValue(-1e300);
    slider_->setMaxValue(1e300);
    slider_->setIntegerValue(5);
    EXPECT_EQ(slider_->integerValue(), 5);
    EXPECT_FALSE(picture().isNull());
}

TEST_F(QtSliderTest, TheKnobJumpsToTheClickAndFollowsTheMouse) {
    const int middle = widget_->height() / 2;
    const QPoint left(2, middle);
    const QPoint right(widget_->width() - 2, middle);
    for (const bool hasCell : {false, true}) {
        if (hasCell) {
            slider_->setCell(std::make_shared<RecordingCell>());
        }
        QTest::mousePress(widget_, Qt::LeftButton, {}, right);
        EXPECT_EQ(slider_->intValue(), 60);
        QTest::mouseMove(widget_, left);
        EXPECT_EQ(slider_->intValue(), 1);
        QTest::mouseRelease(widget_, Qt::LeftButton, {}, left);
        QTest::mouseMove(widget_, right);
        EXPECT_EQ(slider_->intValue(), 1);
    }
    EXPECT_EQ(sent_, 4);
}

TEST_F(QtSliderTest, FromRightToLeftTheLeastValueIsOnTheRight) {
    slider_->setCell(std::make_shared<RecordingCell>());
    widget_->setLayoutDirection(Qt::RightToLeft);
    QTest::mouseClick(widget_, Qt::LeftButton, {}, QPoint(widget_->width() - 2, 5));
    EXPECT_EQ(slider_->intValue(), 1);
    QTest::mouseClick(widget_, Qt::LeftButton, {}, QPoint(2, 5));
    EXPECT_EQ(slider_->intValue(), 60);
}

TEST_F(QtSliderTest, TheCellDrawsTheKnobWhereTheValueIs) {
    const QtResources resources;
    const auto cell = std::make_shared<RecordingCell>();
    slider_->setCell(cell);
    // The layout makes room for the knob.
    QCoreApplication::processEvents();
    slider_->setIntegerValue(1);
    const QImage bare = picture();
    const NSRect first = cell->knob_;
    EXPECT_GT(first.size.width, 0.0);
    EXPECT_GE(first.origin.x, 0.0);
    EXPECT_GE(first.origin.y, 0.0);
    cell->image_ = resources.imageNamed("12");
    ASSERT_NE(cell->image_, nullptr);
    const QImage drawn = picture();
    EXPECT_NE(drawn, bare);
    // Nothing is drawn beside the knob.
    const QRect beside(static_cast<int>(first.origin.x + first.size.width) + 2, 0,
                       widget_->width() / 2, widget_->height());
    EXPECT_EQ(drawn.copy(beside), bare.copy(beside));

    slider_->setIntegerValue(60);
    picture();
    EXPECT_NEAR(cell->knob_.origin.x + cell->knob_.size.width + first.origin.x, widget_->width(),
                1.0);
}

TEST_F(QtSliderTest, TicksWithoutAPlaceAreNotDrawn) {
    const auto cell = std::make_shared<RecordingCell>();
    slider_->setCell(cell);
    const QImage bare = picture();
    EXPECT_THAT(cell->asked_, ::testing::IsEmpty());
    widget_->setProperty("numberOfTickMarks", 3);
    EXPECT_EQ(picture(), bare);
    EXPECT_THAT(cell->asked_, ::testing::ElementsAre(0, 1, 2));
    cell->tick_ = {{100.0, 1.0}, {2.0, 4.0}};
    EXPECT_NE(picture(), bare);
}

/// Records which parts of sliders the style draws.
class RecordingStyle final : public QProxyStyle {
public:
    RecordingStyle() : QProxyStyle(QStringLiteral("Fusion")) {}
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                            QPainter* painter, const QWidget* widget) const override {
        if (control == CC_Slider) {
            drawn_ |= option->subControls;
        }
        QProxyStyle::drawComplexControl(control, option, painter, widget);
    }

    mutable SubControls drawn_ = SC_None;
};

/// A slider with the program's own cell, beside a plain one of the same size and value.
class CellSliderTest : public QtSliderTest {
protected:
    CellSliderTest() {
        auto* const widget = new SliderWidget(&widgets_.widget());
        plain_ = widget;
        plain_->setRange(1, 60);
        cell_->awakeFromNib();
        cell_->knobImage = resources_.imageNamed("12");
        slider_->setCell(cell_);
        slider_->setIntegerValue(30);
        plain_->setValue(30);
        for (SliderWidget* one : {widget_, plain_}) {
            one->setStyle(&style_);
            one->setFixedSize(300, 24);
            one->show();
        }
        QCoreApplication::processEvents();
        style_.drawn_ = QStyle::SC_None;
    }

    QImage plainPicture() { return plain_->grab().toImage(); }
    /// Left and right of the knob.
    static QImage leftPart(const QImage& picture) { return picture.copy(0, 0, 130, 24); }
    static QImage rightPart(const QImage& picture) { return picture.copy(170, 0, 130, 24); }
    static QImage middlePart(const QImage& picture) { return picture.copy(130, 0, 40, 24); }

    RecordingStyle style_;
    Sim sim_;
    QtResources resources_;
    std::shared_ptr<hidenSlidercell> cell_ =
        std::make_shared<hidenSlidercell>(sim_.platform().appKit);
    SliderWidget* plain_ = nullptr;
};

TEST_F(CellSliderTest, TheBarIsThatOfAnyOtherSlider) {
    EXPECT_EQ(leftPart(picture()), leftPart(plainPicture()));
    EXPECT_EQ(rightPart(picture()), rightPart(plainPicture()));
    EXPECT_NE(leftPart(picture()), rightPart(picture()).mirrored(true, false));
    EXPECT_NE(middlePart(picture()), middlePart(plainPicture()));
}

TEST_F(CellSliderTest, OfTheStyleOnlyTheBarIsEverDrawn) {
    widget_->setTickPosition(QSlider::TicksBothSides);
    widget_->setProperty("numberOfTickMarks", 11);
    QTest::mousePress(widget_, Qt::LeftButton, {}, QPoint(150, 12));
    picture();
    EXPECT_EQ(style_.drawn_, QStyle::SC_SliderGroove);
    QTest::mouseRelease(widget_, Qt::LeftButton, {}, QPoint(150, 12));
}

TEST_F(CellSliderTest, WithoutThePictureThereIsTheBarAndNoKnob) {
    const QImage withKnob = picture();
    cell_->knobImage = nullptr;
    const QImage bare = picture();
    EXPECT_NE(middlePart(bare), middlePart(withKnob));
    EXPECT_EQ(leftPart(bare), leftPart(withKnob));
    EXPECT_EQ(rightPart(bare), rightPart(withKnob));
    // Only the bar is left: each pixel equals that at the far left or the far right.
    for (int y = 0; y < bare.height(); ++y) {
        for (int x = 130; x < 170; ++x) {
            const QRgb pixel = bare.pixel(x, y);
            EXPECT_TRUE(pixel == bare.pixel(60, y) || pixel == bare.pixel(240, y)) << x << ' ' << y;
        }
    }
}

} // namespace
} // namespace vistrane
