#include <QWheelEvent>

#include "tests/backends/qt/controls/ControlWidgets.h"

namespace vistrane {
namespace {

class QtPopUpButtonTest : public ControlTest {
protected:
    QtPopUpButtonTest() {
        popUp_ = widgets_.make<QtPopUpButton, PopUpWidget>();
        popUp_->setAction(count());
        widget_ = &widgets_.widgetOf<PopUpWidget>(*popUp_);
        popUp_->addItemWithTitle("A");
        popUp_->addItemWithTitle("B");
    }

    std::shared_ptr<QtPopUpButton> popUp_;
    PopUpWidget* widget_ = nullptr;
};

TEST_F(QtPopUpButtonTest, PickingTheItemThatIsShownSendsTheAction) {
    widgets_.pick(*popUp_, 0);
    EXPECT_EQ(sent_, 1);
    EXPECT_EQ(sender_, popUp_.get());
    EXPECT_EQ(popUp_->indexOfSelectedItem(), 0);
    widgets_.pick(*popUp_, 1);
    widgets_.pick(*popUp_, 1);
    EXPECT_EQ(sent_, 3);
    EXPECT_EQ(popUp_->indexOfSelectedItem(), 1);
}

TEST_F(QtPopUpButtonTest, NoKeyAndNoWheelPicksInTheClosedList) {
    widgets_.show();
    for (const Qt::Key key : {Qt::Key_B, Qt::Key_End, Qt::Key_PageDown}) {
        QTest::keyClick(widget_, key);
    }
    QWheelEvent wheel(QPointF(5, 5), widget_->mapToGlobal(QPointF(5, 5)), {}, QPoint(0, -120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(widget_, &wheel);
    EXPECT_EQ(popUp_->indexOfSelectedItem(), 0);
    EXPECT_EQ(sent_, 0);
}

TEST_F(QtPopUpButtonTest, AnItemThatIsNotPickedIsGreyed) {
    widgets_.show();
    widget_->clearFocus();
    QPalette palette(Qt::white);
    palette.setColor(QPalette::ButtonText, Qt::black);
    palette.setColor(QPalette::PlaceholderText, Qt::blue);
    widget_->setPalette(palette);
    const auto hasBlue = [this] {
        const QImage picture = widget_->grab().toImage();
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                const QColor colour = picture.pixelColor(x, y);
                if (colour.blue() > colour.red() + 60 && colour.blue() > colour.green() + 60) {
                    return true;
                }
            }
        }
        return false;
    };
    EXPECT_TRUE(hasBlue());
    widgets_.pick(*popUp_, 0);
    widget_->clearFocus();
    EXPECT_FALSE(hasBlue());
    popUp_->removeAllItems();
    EXPECT_FALSE(hasBlue());
    widget_->setPlaceholderText("No camera");
    EXPECT_TRUE(hasBlue());
    popUp_->addItemWithTitle("A");
    EXPECT_TRUE(hasBlue());
}

TEST_F(QtPopUpButtonTest, KeysOpenTheList) {
    widgets_.show();
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Down, Qt::Key_Up, Qt::Key_Return}) {
        QTest::keyClick(widget_, key);
        EXPECT_TRUE(widget_->view()->isVisible()) << key;
        widget_->hidePopup();
    }
    EXPECT_EQ(sent_, 0);
    popUp_->removeAllItems();
    QTest::keyClick(widget_, Qt::Key_Space);
    EXPECT_FALSE(widget_->view()->isVisible());
    // Nor does filling the list send anything.
    popUp_->addItemWithTitle("A");
    popUp_->addItemWithTitle("A");
    EXPECT_EQ(sent_, 0);
}

TEST_F(QtPopUpButtonTest, ATitleIsKeptByteForByteAndShownAsText) {
    popUp_->addItemWithTitle("Cam & \xff");
    EXPECT_EQ(popUp_->itemTitles().back(), "Cam & \xff");
    EXPECT_EQ(widget_->itemText(2), QStringLiteral("Cam & \uFFFD"));
}

} // namespace
} // namespace vistrane
