#include "backends/qt/system/Appearance.h"

#include <vector>

#include <QApplication>
#include <QDBusVariant>
#include <QPalette>
#include <QProgressBar>
#include <QProxyStyle>
#include <QStyle>
#include <QTest>
#include <gtest/gtest.h>

#include "tests/support/FakeServices.h"

namespace vistrane {
namespace {

constexpr char portalService[] = "org.freedesktop.portal.Desktop";
constexpr char readMethod[] = "org.freedesktop.portal.Settings.Read";
constexpr char appearanceGroup[] = "org.freedesktop.appearance";
constexpr char colorSchemeKey[] = "color-scheme";

/// In milliseconds; ends a test that would never end.
constexpr int timeout = 60000;

QVariant wrapped(const QVariant& value) {
    return QVariant::fromValue(QDBusVariant(value));
}

class AppearanceTest : public ::testing::Test {
protected:
    ~AppearanceTest() override { services_.reset(); }

    /// Runs the loop until every signal sent so far has arrived.
    void receive(Appearance& appearance) {
        bool arrived = false;
        const bool wasDark = appearance.isDark();
        appearance.setChangeHandler([&] { arrived = true; });
        services_.sendSetting(appearanceGroup, colorSchemeKey, QVariant(wasDark ? 2U : 1U));
        EXPECT_TRUE(QTest::qWaitFor([&] { return arrived; }, timeout));
    }

    FakeServices& services_ = FakeServices::shared();
};

TEST_F(AppearanceTest, WithoutAPortalThePaletteDecides) {
    const Appearance appearance;
    EXPECT_FALSE(appearance.isDark());
    EXPECT_EQ(appearance.interfaceStyle(), std::nullopt);
}

TEST_F(AppearanceTest, WithoutAPortalAChangedPaletteIsFollowed) {
    Appearance appearance;
    std::vector<bool> changes;
    appearance.setChangeHandler([&] { changes.push_back(appearance.isDark()); });
    for (const bool isDark : {true, false}) {
        QApplication::setPalette(ownPalette(isDark));
        EXPECT_TRUE(QTest::qWaitFor([&] { return appearance.isDark() == isDark; }, timeout));
        EXPECT_EQ(changes.size(), isDark ? 1U : 2U);
    }
    QApplication::setPalette(QPalette());
}

TEST_F(AppearanceTest, BlackFieldsInABlackWindowAreSetApart) {
    // The style of a desktop with such colours.
    class BlackStyle : public QProxyStyle {
    public:
        BlackStyle() : QProxyStyle("Fusion") {}
        void polish(QPalette& palette) override {
            palette = QPalette(Qt::white, Qt::black, Qt::white, Qt::darkGray, Qt::gray, Qt::white,
                               Qt::white, Qt::black, Qt::black);
        }
        using QProxyStyle::polish;
    };
    const QString before = QApplication::style()->name();
    QApplication::setStyle(new BlackStyle);
    separateFields();
    const QPalette palette = QApplication::palette();
    EXPECT_EQ(palette.color(QPalette::Window), QColor(Qt::black));
    EXPECT_GT(palette.color(QPalette::Base).lightness(), 50);
    EXPECT_GT(palette.color(QPalette::Button).lightness(), 50);
    EXPECT_EQ(palette.color(QPalette::Text), QColor(Qt::white));
    QApplication::setStyle(before);
    QApplication::setPalette(QPalette());
    const QColor field = QApplication::palette().color(QPalette::Base);
    separateFields();
    EXPECT_EQ(QApplication::palette().color(QPalette::Base), field);
}

TEST_F(AppearanceTest, ADarkDesktopIsDarkFromTheStart) {
    services_.offerScheme(1U);
    const Appearance appearance;
    EXPECT_TRUE(appearance.isDark());
    EXPECT_EQ(appearance.interfaceStyle(), "Dark");
}

TEST_F(AppearanceTest, ALightDesktopAndOneWithoutAPreferenceAreLight) {
    for (const QVariant& scheme : {QVariant(2U), QVariant(0U), QVariant(7U), QVariant("dark")}) {
        services_.offerScheme(scheme);
        EXPECT_FALSE(Appearance().isDark()) << scheme.toString().toStdString();
    }
}

TEST_F(AppearanceTest, AnAnswerThatIsWrappedOnceIsUnderstood) {
    services_.offer(portalService);
    services_.answer(readMethod, {wrapped(1U)});
    EXPECT_TRUE(Appearance().isDark());
}

TEST_F(AppearanceTest, ChangesAreReported) {
    services_.offerScheme(2U);
    Appearance appearance;
    std::vector<bool> reported;
    appearance.setChangeHandler([&] { reported.push_back(appearance.isDark()); });
    services_.sendSetting(appearanceGroup, colorSchemeKey, QVariant(1U));
    EXPECT_TRUE(QTest::qWaitFor([&] { return reported.size() == 1; }, timeout));
    services_.sendSetting(appearanceGroup, colorSchemeKey, QVariant(1U));
    // Signals in quick succession may overtake each other.
    QTest::qWait(50);
    receive(appearance);
    EXPECT_EQ(reported, (std::vector<bool>{true}));
    EXPECT_FALSE(appearance.isDark());
}

TEST_F(AppearanceTest, OtherSettingsChangeNothing) {
    services_.offerScheme(2U);
    Appearance appearance;
    int reported = 0;
    appearance.setChangeHandler([&] { ++reported; });
    services_.sendSetting(appearanceGroup, "accent-color", QVariant(1U));
    services_.sendSetting("org.gnome.desktop.interface", colorSchemeKey, QVariant(1U));
    receive(appearance);
    EXPECT_EQ(reported, 0);
}

TEST_F(AppearanceTest, APortalThatAnswersLateIsNotWaitedForAndChangesThingsLater) {
    services_.offer(portalService);
    services_.ignore(readMethod);
    Appearance appearance;
    EXPECT_FALSE(appearance.isDark());
    bool reported = false;
    appearance.setChangeHandler([&] { reported = true; });
    services_.answer(readMethod, {wrapped(wrapped(1U))});
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return reported || services_.countOf("Read") >= 2; }, timeout));
    services_.sendSetting(appearanceGroup, colorSchemeKey, QVariant(1U));
    EXPECT_TRUE(QTest::qWaitFor([&] { return reported; }, timeout));
    EXPECT_TRUE(appearance.isDark());
}

TEST(Palette, IsAsDarkAsTheDesktopAndLetsBoxesAndFieldsStandOutInTheDark) {
    const auto lightness = [](QPalette::ColorRole role) {
        return QApplication::palette().color(role).lightness();
    };
    applyPalette(true);
    EXPECT_LT(lightness(QPalette::Window), lightness(QPalette::WindowText));
    EXPECT_GE(lightness(QPalette::Base), lightness(QPalette::Window) + 30);
    EXPECT_GE(lightness(QPalette::Text), lightness(QPalette::Base) + 120);
    applyPalette(false);
    EXPECT_GT(lightness(QPalette::Window), lightness(QPalette::WindowText));
}

TEST(Palette, OfABarIsDarkerThanThatOfFieldsInDarkColoursOnly) {
    QProgressBar bar;
    const auto base = [&bar] { return bar.palette().color(QPalette::Base); };
    applyPalette(true);
    EXPECT_LT(base().lightness(), QApplication::palette().color(QPalette::Base).lightness());
    applyPalette(false);
    EXPECT_EQ(base(), QApplication::palette().color(QPalette::Base));
}

} // namespace
} // namespace vistrane
