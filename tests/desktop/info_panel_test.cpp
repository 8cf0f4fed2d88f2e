#include "tests/desktop/DesktopTest.h"

namespace vistrane {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::Pair;
using testing::SizeIs;
using testing::StartsWith;

/// The info panel, the menus and what they open.
class InfoPanel : public DesktopTest {
protected:
    void SetUp() override {
        storeUsual();
        start();
    }

    /// Clicks one after the other.
    void chooseItems(const std::vector<std::string>& titles) {
        for (const std::string& title : titles) {
            click(find("menu item", title));
        }
    }

    void openPanel() {
        chooseItems({"Help", "About Vistrane"});
        find("push button", "Support Mail");
    }

    /// The next address that the program asks the desktop to open.
    std::string nextOpened() {
        await("an address", [this] { return desktop.opened().size() > openedBefore_; });
        return desktop.opened().at(openedBefore_++);
    }

private:
    std::size_t openedBefore_ = 0;
};

TEST_F(InfoPanel, OpensThePagesAndMailsThatItNames) {
    clickButton("What is a frame rate?");
    EXPECT_THAT(nextOpened(), StartsWith("https://"));
    openPanel();
    keepScreen("panel");
    label(mainWindow().title);
    clickButton("Rate Vistrane");
    const std::string ownPage = nextOpened();
    EXPECT_THAT(ownPage, HasSubstr("://"));
    clickButton("More by mantisQRX");
    const std::string allPages = nextOpened();
    EXPECT_NE(allPages, ownPage);
    clickButton("Support Mail");
    EXPECT_THAT(nextOpened(),
                AllOf(StartsWith("mailto:"), HasSubstr("?SUBJECT=Vistrane%20"),
                      HasSubstr("%20-%20support%20request&BODY=Hi%20mantisQRX,%0A%0A%0A%0A%0Amy%20"
                                "OS")));

    const std::string question = "Need more functions? or have some ideas?";
    const ShownAlert asked{question,
                           "Plese visit app's home page and leave your request there. You may also "
                           "drop us an email or check out all our apps up to now.",
                           {"feature request", "more by mantisQRX", "cancel"}};
    clickButton("Feature Request");
    EXPECT_EQ(alert(question), asked);
    keepScreen("question");
    answer(question, "cancel");
    clickButton("Feature Request");
    answer(question, "more by mantisQRX");
    EXPECT_EQ(nextOpened(), allPages);
    clickButton("Feature Request");
    answer(question, "feature request");
    EXPECT_EQ(nextOpened(), ownPage);
    EXPECT_THAT(nextOpened(), HasSubstr("%20-%20frature%20request&BODY="));
    // Nothing else is opened, however late.
    EXPECT_EQ(quit(), 0);
    EXPECT_THAT(desktop.opened(), SizeIs(7));
}

TEST_F(InfoPanel, MenuOfOtherApplicationsOpensTheirPages) {
    chooseItems({"Help", "Other Applications"});
    const Control item = find("menu item", "frameweave");
    keepScreen("menu");
    click(item);
    EXPECT_THAT(nextOpened(), HasSubstr("://"));
}

TEST_F(InfoPanel, TheDockSettingHidesTheMenuBarAndIsRemembered) {
    openPanel();
    const Control dock = find("check box", "Show in the dock or task bar");
    EXPECT_TRUE(dock.is(ControlState::checked));
    find("menu bar", "");
    click(dock);
    await("the menu bar to go", [this] { return !seek("menu bar", ""); });
    keepScreen("accessory");
    EXPECT_EQ(quit(), 0);
    EXPECT_THAT(stored(), Contains(Pair("iDock", 0)));
    start();
    EXPECT_EQ(seek("menu bar", ""), std::nullopt);
    await("the keyboard", [&] { return screen().activeWindow() == mainWindow().id; });
    screen().press({"Shift_L", "F1"});
    const Control restored = find("check box", "Show in the dock or task bar");
    EXPECT_FALSE(restored.is(ControlState::checked));
    click(restored);
    await("the menu bar", [this] { return seek("menu bar", ""); });
    EXPECT_EQ(quit(), 0);
    EXPECT_THAT(stored(), Contains(Pair("iDock", 1)));
}

TEST_F(InfoPanel, TipsOpenedByHandBeginAtTheFirstPage) {
    giveKeysToMainWindow();
    screen().press({"F1"});
    tips();
    awaitLabel("1 of 4");
    const Control never = find("check box", "Do not show these tips at start");
    EXPECT_TRUE(never.is(ControlState::checked));
    clickButton("Next");
    awaitLabel("2 of 4");
    screen().close(tips());
    await("the end of the tips", [this] { return !windowTitled("Quick Start Tips"); });
    giveKeysToMainWindow();
    screen().press({"F1"});
    awaitLabel("1 of 4");
    click(never);
    await("the store", [this] { return stored()["iTip"] == 0; });
    EXPECT_EQ(quit(), 0);
    start();
    tips();
}

} // namespace
} // namespace vistrane
