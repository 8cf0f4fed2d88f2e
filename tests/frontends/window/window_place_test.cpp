#include "frontends/window/WindowPlace.h"

#include <QApplication>
#include <QScreen>
#include <gtest/gtest.h>

#include "backends/sim/Sim.h"

namespace vistrane {
namespace {

class WindowPlaceTest : public ::testing::Test {
protected:
    void store(const QRect& place) {
        settings_.setInteger(place.x(), "windowLeft");
        settings_.setInteger(place.y(), "windowTop");
        settings_.setInteger(place.width(), "windowWidth");
        settings_.setInteger(place.height(), "windowHeight");
    }
    QRect restored() {
        QWidget window;
        window.resize(300, 200);
        restorePlace(window, settings_);
        return {window.pos(), window.size()};
    }

    const QRect room_ = QApplication::primaryScreen()->availableGeometry();
    Sim sim_;
    const Platform platform_ = sim_.platform();
    NSUserDefaults& settings_ = platform_.foundation.standardUserDefaults();
};

TEST_F(WindowPlaceTest, AStoredPlaceIsTakenAsItIs) {
    const QRect place(room_.topLeft() + QPoint(30, 40), QSize(320, 240));
    store(place);
    EXPECT_EQ(restored(), place);
}

TEST_F(WindowPlaceTest, WithoutAUsablePlaceTheWindowKeepsItsSize) {
    EXPECT_EQ(restored().size(), QSize(300, 200));
    store({room_.topLeft(), QSize(0, -5)});
    EXPECT_EQ(restored().size(), QSize(300, 200));
    // On a screen that is gone.
    store({room_.bottomRight() + QPoint(5000, 5000), QSize(320, 240)});
    EXPECT_EQ(restored().size(), QSize(300, 200));
}

TEST_F(WindowPlaceTest, AWindowLargerThanTheScreenIsMadeToFit) {
    for (const QRect& place :
         {room_.adjusted(-400, -300, 400, 300), QRect(room_.center(), room_.size())}) {
        store(place);
        EXPECT_TRUE(room_.contains(restored()));
    }
}

TEST_F(WindowPlaceTest, APlaceIsRememberedUnlessTheWindowIsMinimised) {
    const QRect place(room_.topLeft() + QPoint(30, 40), QSize(320, 240));
    QWidget window;
    window.resize(place.size());
    window.move(place.topLeft());
    rememberPlace(window, settings_);
    EXPECT_EQ(restored(), place);
    window.setWindowState(Qt::WindowMinimized);
    window.resize(200, 100);
    rememberPlace(window, settings_);
    EXPECT_EQ(restored(), place);
}

TEST_F(WindowPlaceTest, AMaximisedWindowIsMaximisedAgainAndKeepsItsOtherPlace) {
    const QRect place(room_.topLeft() + QPoint(30, 40), QSize(320, 240));
    store(place);
    QWidget first;
    first.setWindowState(Qt::WindowMaximized);
    rememberPlace(first, settings_);
    EXPECT_EQ(settings_.integerForKey("windowWidth"), place.width());
    QWidget second;
    restorePlace(second, settings_);
    EXPECT_TRUE(second.isMaximized());
    const QWidget third;
    rememberPlace(third, settings_);
    QWidget fourth;
    restorePlace(fourth, settings_);
    EXPECT_FALSE(fourth.isMaximized());
}

} // namespace
} // namespace vistrane
