#include <map>
#include <set>

#include <QAccessible>
#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <gmock/gmock.h>

#include "backends/qt/menus/QtApplication.h"
#include "backends/sim/Sim.h"
#include "core/app/AppDelegate.h"
#include "core/infopanel/mantisQRXpanel.h"
#include "tests/backends/qt/controls/ControlWidgets.h"
#include "tests/backends/qt/controls/interface_widgets.h"
#include "tests/backends/qt/longest_wait.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class QtInterfaceTest : public ::testing::Test {
protected:
    NSNib& controller() { return interface_.nib("AppDelegate"); }
    NSNib& panel() { return interface_.nib("mantisQRXpanel"); }

    template <typename Control>
    std::shared_ptr<Control> outlet(NSNib& nib, const char* name) {
        std::shared_ptr<Control> field;
        nib.outlet(name, field);
        return field;
    }
    template <typename Widget>
    Widget& widget(const char* name) {
        return named<Widget>(interface_, name);
    }
    /// Records what is sent under that selector.
    void offer(NSNib& nib, const std::string& selector) {
        nib.action(selector, [this, selector](NSObject*) { sent_.push_back(selector); });
    }
    std::vector<std::string> takeSent() { return std::exchange(sent_, {}); }
    void openTips() { outlet<NSWindow>(panel(), "tipWindow")->makeKeyAndOrderFront(nullptr); }

    void show() {
        QWidget& window = interface_.mainWindow();
        window.show();
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window, longestWait));
    }

    QtResources resources_;
    QtInterface interface_{resources_};
    std::vector<std::string> sent_;
};

TEST_F(QtInterfaceTest, EachObjectFindsTheOutletsOfItsOwnFiles) {
    Sim sim;
    AppDelegate delegate(sim.platform());
    EXPECT_THAT(delegate.connectInterface(controller()), IsEmpty());
    EXPECT_NE(delegate.leadingImage, nullptr);
    EXPECT_NE(delegate.previewView, nullptr);
    mantisQRXpanel object(sim.platform());
    EXPECT_THAT(object.connectInterface(panel()), IsEmpty());
    EXPECT_NE(object.tipView, nullptr);

    EXPECT_EQ(outlet<NSButton>(panel(), "startB"), nullptr);
    EXPECT_EQ(outlet<NSButton>(controller(), "dockButton"), nullptr);
    EXPECT_EQ(outlet<NSSlider>(controller(), "startB"), nullptr);
    EXPECT_EQ(outlet<NSButton>(controller(), "nobody"), nullptr);
    // But the version goes into the title of the main window.
    EXPECT_EQ(outlet<NSWindow>(panel(), "myWindow"), outlet<NSWindow>(controller(), "myWindow"));
}

TEST_F(QtInterfaceTest, TheControlsStartWithTheirTitlesRangesAndValues) {
    const std::pair<const char*, const char*> titles[] = {
        {"startB", "Start Auto Capture"},
        {"oneB", "Single Frame"},
        {"compilingB", "Compile Movie"},
        {"outfolderB", "click to select the output folder"},
        {"previewPlayButton", ""}};
    for (const auto& [name, title] : titles) {
        EXPECT_EQ(outlet<NSButton>(controller(), name)->title(), title);
    }
    const auto rate = outlet<NSSlider>(controller(), "fpsS");
    EXPECT_EQ(rate->intValue(), 25);
    rate->setIntegerValue(0);
    EXPECT_EQ(rate->intValue(), 1);
    rate->setIntegerValue(1000);
    EXPECT_EQ(rate->intValue(), 60);
    const auto frames = outlet<NSSlider>(controller(), "photoSlider");
    frames->setIntegerValue(1);
    EXPECT_EQ(frames->intValue(), 0);
    EXPECT_EQ(outlet<NSPopUpButton>(controller(), "AVDevicePopUp")->indexOfSelectedItem(), -1);
    EXPECT_EQ(outlet<NSButton>(controller(), "slowB")->state(), 0);
}

TEST_F(QtInterfaceTest, EachButtonAndMenuItemSendsItsAction) {
    struct Row {
        NSNib& object;
        const char* selector;
        std::vector<const char*> senders;
    };
    const Row rows[] = {{controller(), "startRunning:", {"startB", "startItem"}},
                        {controller(), "addFrameClick:", {"oneB", "singleItem"}},
                        {controller(), "genneratingMovie:", {"compilingB", "compileItem"}},
                        {controller(), "outputFolder:", {"outfolderB", "chooseFolderItem"}},
                        {controller(), "playPictures:", {"previewPlayButton", "playItem"}},
                        {controller(), "realHide:", {"hideItem"}},
                        {controller(), "realUnhide:", {"showItem"}},
                        {controller(), "whatisFPS:", {"fpsHelpB", "frameRateItem"}},
                        {panel(), "dockIconSwitching:", {"dockButton"}},
                        {panel(), "showEasyStartTip:", {"tipsB", "tipsItem"}},
                        {panel(), "tipsForAutostart:", {"autostartB", "autostartItem"}},
                        {panel(), "rateMe:", {"rateB", "rateItem"}},
                        {panel(), "sendEmailtoMe:", {"mailB", "mailItem"}},
                        {panel(), "featureRequest:", {"requestB", "requestItem"}},
                        {panel(), "moreBYmantisqrx:", {"moreB", "moreItem"}},
                        {panel(), "tipNext:", {"tipNextB"}},
                        {panel(), "tipPreverious:", {"tipPreviousB"}},
                        {panel(), "tipButtonChanged:", {"tipButton"}}};
    for (const auto& [object, selector, senders] : rows) {
        offer(object, selector);
        for (const char* name : senders) {
            auto& sender = widget<QObject>(name);
            const bool isButton = sender.isWidgetType();
            EXPECT_TRUE(QMetaObject::invokeMethod(&sender, isButton ? "click" : "trigger"));
            EXPECT_THAT(takeSent(), ElementsAre(selector)) << name;
        }
    }
}

TEST_F(QtInterfaceTest, FieldsAndSlidersSendTheirActions) {
    show();
    for (const char* selector : {"timeIntervalchanged:", "rateChanged:", "sliderDisplaying:"}) {
        offer(controller(), selector);
    }
    for (const char* name : {"hInput", "mInput", "sInput"}) {
        QTest::keyClick(&widget<QWidget>(name), Qt::Key_Return);
        EXPECT_THAT(takeSent(), ElementsAre("timeIntervalchanged:")) << name;
    }
    QTest::keyClick(&widget<QWidget>("fpsS"), Qt::Key_Right);
    EXPECT_THAT(takeSent(), ElementsAre("rateChanged:"));
    outlet<NSSlider>(controller(), "photoSlider")->setMaxValue(5.0);
    QTest::keyClick(&widget<QWidget>("photoSlider"), Qt::Key_Right);
    EXPECT_THAT(takeSent(), ElementsAre("sliderDisplaying:"));
}

TEST_F(QtInterfaceTest, AfterTheStartTypingChangesNoFieldAndTheTabKeyGoesOnWhereItWas) {
    show();
    const auto window = outlet<NSWindow>(controller(), "myWindow");
    // As the program does when capture starts.
    controller().action("startRunning:",
                        [window](NSObject*) { window->makeFirstResponder(nullptr); });
    auto& minutes = widget<QLineEdit>("mInput");
    auto& start = widget<QWidget>("startB");
    const auto chooseItem = [this] { widget<QAction>("startItem").trigger(); };
    const auto pressSpace = [&start] { QTest::keyClick(&start, Qt::Key_Space); };
    const auto focusedAfter = [&](QWidget& from, const std::function<void()>& begin, Qt::Key key) {
        from.setFocus();
        begin();
        QWidget* const focused = QApplication::focusWidget();
        EXPECT_NE(focused, &from);
        window->makeFirstResponder(nullptr);
        EXPECT_EQ(QApplication::focusWidget(), focused);
        QTest::keyClicks(focused, QStringLiteral("4"));
        QTest::keyClick(focused, key);
        return QApplication::focusWidget();
    };
    minutes.setText(QStringLiteral("7"));
    EXPECT_EQ(focusedAfter(minutes, chooseItem, Qt::Key_Tab), &widget<QWidget>("sInput"));
    EXPECT_EQ(focusedAfter(minutes, chooseItem, Qt::Key_Backtab), &minutes);
    EXPECT_EQ(minutes.text(), QStringLiteral("7"));
    EXPECT_EQ(focusedAfter(start, pressSpace, Qt::Key_Tab), &widget<QWidget>("oneB"));
    EXPECT_EQ(focusedAfter(start, pressSpace, Qt::Key_Backtab), &start);
}

TEST_F(QtInterfaceTest, APressOfTheFrameSliderTellsOfTheFramesHoweverFewThereAre) {
    Sim sim;
    AppDelegate delegate(sim.platform());
    delegate.connectInterface(controller());
    show();
    auto& slider = widget<QWidget>("photoSlider");
    QTest::mouseClick(&slider, Qt::LeftButton, {}, slider.rect().center());
    EXPECT_EQ(widget<QLabel>("currentS").text(), "Displaying frame 1 of 0");
    delegate.pictureArray.store(
        std::make_shared<const std::vector<std::string>>(std::vector<std::string>{"/a.png"}));
    QTest::mouseClick(&slider, Qt::LeftButton, {}, slider.rect().center());
    EXPECT_EQ(widget<QLabel>("currentS").text(), "Displaying frame 1 of 1");
}

TEST_F(QtInterfaceTest, AMenuItemDoesNothingWhileADialogIsUp) {
    for (const char* selector : {"startRunning:", "realHide:", "rateMe:"}) {
        offer(controller(), selector);
    }
    const auto chooseAll = [this] {
        for (const char* name : {"startItem", "hideItem", "rateItem", "infoItem"}) {
            widget<QAction>(name).trigger();
        }
    };
    QDialog dialog;
    dialog.setModal(true);
    dialog.show();
    chooseAll();
    EXPECT_THAT(takeSent(), IsEmpty());
    EXPECT_FALSE(widget<QWidget>("infoPanel").isVisible());
    dialog.close();
    chooseAll();
    EXPECT_THAT(takeSent(), ElementsAre("startRunning:", "realHide:", "rateMe:"));
    EXPECT_TRUE(widget<QWidget>("infoPanel").isVisible());
}

TEST_F(QtInterfaceTest, AMenuItemIsEnabledWithItsButton) {
    const auto button = outlet<NSButton>(controller(), "compilingB");
    button->setEnabled(false);
    EXPECT_FALSE(widget<QAction>("compileItem").isEnabled());
    button->setEnabled(true);
    EXPECT_TRUE(widget<QAction>("compileItem").isEnabled());
}

TEST_F(QtInterfaceTest, ImportantItemsAreInTheStatusMenuToo) {
    QStringList names;
    for (const QAction* item : interface_.statusMenu().actions()) {
        names << item->objectName();
    }
    for (const char* name : {"startItem", "singleItem", "hideItem", "showItem", "quitItem"}) {
        EXPECT_TRUE(names.contains(QString::fromUtf8(name))) << name;
    }
}

TEST_F(QtInterfaceTest, WithoutMenuBarAndStatusIconTheInfoPanelOpensByKeyAndContextMenu) {
    QtApplication application([] { return false; });
    application.setActivationPolicy(NSApplicationActivationPolicyAccessory);
    show();
    ASSERT_FALSE(widget<QMenuBar>("menuBar").isVisible());
    QWidget& info = widget<QWidget>("infoPanel");
    QTest::keySequence(&interface_.mainWindow(), QKeySequence("Shift+F1"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return info.isVisible(); }, longestWait));
    info.close();

    QMenu* const menu = openContextMenu(interface_);
    ASSERT_NE(menu, nullptr);
    menu->setActiveAction(&widget<QAction>("infoItem"));
    QTest::keyClick(menu, Qt::Key_Return);
    EXPECT_TRUE(info.isVisible());
}

TEST_F(QtInterfaceTest, ThePanelIsNotifiedWhenTheTipsWindowClosesByItsButtonOrByEscape) {
    offer(panel(), "windowWillClose:");
    QWidget& tips = widget<QWidget>("tipWindow");
    openTips();
    tips.close();
    EXPECT_THAT(takeSent(), ElementsAre("windowWillClose:"));
    openTips();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&tips, longestWait));
    QTest::keyClick(&tips, Qt::Key_Escape);
    EXPECT_FALSE(tips.isVisible());
    EXPECT_THAT(takeSent(), ElementsAre("windowWillClose:"));
    show();
    interface_.mainWindow().close();
    EXPECT_THAT(takeSent(), IsEmpty());
}

TEST_F(QtInterfaceTest, TheSmallWindowsAreWindowsOfTheirOwn) {
    show();
    for (const char* name : {"tipWindow", "infoPanel"}) {
        QWidget& window = widget<QWidget>(name);
        EXPECT_EQ(window.parentWidget(), nullptr) << name;
        window.show();
        EXPECT_EQ(window.windowHandle()->transientParent(), nullptr) << name;
        // A window manager treats other types as parts of the main window.
        EXPECT_EQ(window.windowType(), Qt::Window) << name;
        EXPECT_TRUE(window.windowFlags().testFlag(Qt::WindowMinimizeButtonHint)) << name;
    }
    QWidget& main = interface_.mainWindow();
    main.showMinimized();
    widget<QAction>("infoItem").trigger();
    EXPECT_TRUE(main.isMinimized());
    EXPECT_FALSE(widget<QWidget>("infoPanel").isMinimized());
}

TEST_F(QtInterfaceTest, HidingMinimisesEveryWindowAndUnhidingBringsBackTheMainOne) {
    QtApplication application([] { return true; });
    show();
    const auto main = outlet<NSWindow>(controller(), "myWindow");
    openTips();
    widget<QAction>("infoItem").trigger();
    application.miniaturizeAll(nullptr);
    for (const QWidget* window : interface_.windows()) {
        EXPECT_TRUE(window->isMinimized()) << window->objectName().toStdString();
    }
    main->makeKeyAndOrderFront(nullptr);
    EXPECT_FALSE(interface_.mainWindow().isMinimized());
    EXPECT_TRUE(widget<QWidget>("tipWindow").isMinimized());
    EXPECT_TRUE(widget<QWidget>("infoPanel").isMinimized());
    widget<QAction>("infoItem").trigger();
    EXPECT_FALSE(widget<QWidget>("infoPanel").isMinimized());
}

TEST_F(QtInterfaceTest, UnhidingBringsTheMainWindowInFrontOfTheActiveOne) {
    QtApplication application([] { return true; });
    QWidget& main = interface_.mainWindow();
    application.setMainWindow(&main);
    show();
    widget<QAction>("infoItem").trigger();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&widget<QWidget>("infoPanel"), longestWait));
    outlet<NSWindow>(controller(), "myWindow")->makeKeyAndOrderFront(nullptr);
    application.activateIgnoringOtherApps(true);
    EXPECT_TRUE(QTest::qWaitForWindowActive(&main, longestWait));
    QCoreApplication::processEvents();
    EXPECT_EQ(QApplication::activeWindow(), &main);
}

TEST_F(QtInterfaceTest, ASmallWindowFirstAppearsInTheMiddleOfTheMainOneAndThenWhereItWasPut) {
    show();
    QWidget& main = interface_.mainWindow();
    main.setGeometry(60, 40, 700, 600);
    QWidget& info = widget<QWidget>("infoPanel");
    widget<QAction>("infoItem").trigger();
    const QPoint apart = info.geometry().center() - main.geometry().center();
    EXPECT_LE(apart.manhattanLength(), 80);
    info.move(5, 6);
    info.close();
    widget<QAction>("infoItem").trigger();
    EXPECT_EQ(info.pos(), QPoint(5, 6));
}

TEST_F(QtInterfaceTest, AWindowThatIsShownTooEarlyComesUpInFrontOfTheMainOne) {
    interface_.setSmallWindowsHeldBack(true);
    openTips();
    QWidget& tips = widget<QWidget>("tipWindow");
    EXPECT_FALSE(tips.isVisible());
    show();
    EXPECT_FALSE(tips.isVisible());
    interface_.setSmallWindowsHeldBack(false);
    EXPECT_TRUE(QTest::qWaitForWindowActive(&tips, longestWait));
    EXPECT_FALSE(widget<QWidget>("infoPanel").isVisible());
    tips.close();
    interface_.setSmallWindowsHeldBack(false);
    EXPECT_FALSE(tips.isVisible());
}

TEST_F(QtInterfaceTest, TheFrameSliderAloneGetsACellAndAsksItForItsTickMarks) {
    std::vector<std::shared_ptr<RecordingCell>> made;
    const auto make = [&] { return made.emplace_back(std::make_shared<RecordingCell>()); };
    controller().sliderCell("anotherCell", make);
    EXPECT_THAT(made, IsEmpty());
    controller().sliderCell("hidenSlidercell", make);
    ASSERT_THAT(made, ::testing::SizeIs(1));
    EXPECT_EQ(made.front()->awoken_, 1);
    widget<QWidget>("photoSlider").grab();
    EXPECT_THAT(made.front()->asked_, ::testing::SizeIs(11));
}

// ---- Accessibility -----------------------------------------------------------------------------

class QtInterfaceAccessTest : public QtInterfaceTest {
protected:
    static std::vector<QWidget*> focusChain(QWidget& window) {
        std::vector<QWidget*> chain;
        for (QWidget* next = window.nextInFocusChain(); next != &window;
             next = next->nextInFocusChain()) {
            const bool takesFocus = (next->focusPolicy() & Qt::TabFocus) != 0;
            if (next->window() == &window && takesFocus && next->isVisibleTo(&window) &&
                next->focusProxy() == nullptr) {
                chain.push_back(next);
            }
        }
        return chain;
    }
    static void expectDistinct(const std::multiset<std::string>& all) {
        EXPECT_THAT(all, ::testing::Not(IsEmpty()));
        EXPECT_EQ(all.size(), std::set<std::string>(all.begin(), all.end()).size())
            << ::testing::PrintToString(all);
    }
    /// The visible widgets of the main window.
    std::vector<QWidget*> visibleWidgets() {
        std::vector<QWidget*> visible;
        for (QWidget* child : interface_.mainWindow().findChildren<QWidget*>()) {
            if (child->window() == &interface_.mainWindow() && child->isVisible()) {
                visible.push_back(child);
            }
        }
        return visible;
    }
};

TEST_F(QtInterfaceAccessTest, WhateverTakesFocusHasANameAndADescription) {
    std::size_t count = 0;
    for (QWidget* window : interface_.windows()) {
        for (QWidget* focusable : focusChain(*window)) {
            QAccessibleInterface* const access = QAccessible::queryAccessibleInterface(focusable);
            ASSERT_NE(access, nullptr);
            const std::string name = focusable->objectName().toStdString();
            EXPECT_FALSE(access->text(QAccessible::Name).isEmpty()) << name;
            EXPECT_FALSE(access->text(QAccessible::Description).isEmpty()) << name;
            ++count;
        }
    }
    EXPECT_GE(count, 20U);
}

TEST_F(QtInterfaceAccessTest, TheTabKeyGoesThroughTheMainWindowInReadingOrder) {
    std::vector<std::string> names;
    for (const QWidget* focusable : focusChain(interface_.mainWindow())) {
        names.push_back(focusable->objectName().toStdString());
    }
    EXPECT_THAT(names, ElementsAre("AVDevicePopUp", "hInput", "mInput", "sInput", "startB", "oneB",
                                   "slowB", "previewPlayButton", "photoSlider", "fpsS", "fpsHelpB",
                                   "outfolderB", "compilingB"));
}

TEST_F(QtInterfaceAccessTest, TheTabKeyGoesThroughTheSmallWindows) {
    EXPECT_THAT(focusChain(widget<QWidget>("tipWindow")), ::testing::SizeIs(3));
    EXPECT_THAT(focusChain(widget<QWidget>("infoPanel")), ::testing::SizeIs(7));
}

TEST_F(QtInterfaceAccessTest, ShortcutsWorkWhateverTheTitlesAre) {
    show();
    const std::map<std::string, std::pair<std::string, std::vector<QKeySequence>>> shortcuts{
        {"startB", {"startRunning:", {QKeySequence("Alt+S"), QKeySequence("Ctrl+T")}}},
        {"oneB", {"addFrameClick:", {QKeySequence("Alt+G"), QKeySequence("Ctrl+G")}}},
        {"previewPlayButton", {"playPictures:", {QKeySequence("Alt+P"), QKeySequence("Ctrl+P")}}},
        {"compilingB", {"genneratingMovie:", {QKeySequence("Alt+C"), QKeySequence("Ctrl+M")}}},
        {"outfolderB", {"outputFolder:", {QKeySequence("Alt+O"), QKeySequence("Ctrl+O")}}}};
    for (const auto& [name, shortcut] : shortcuts) {
        const auto& [selector, keys] = shortcut;
        offer(controller(), selector);
        const auto button = outlet<NSButton>(controller(), name.c_str());
        for (const std::string& title : {button->title(), std::string("/tmp/&x"), std::string()}) {
            button->setTitle(title);
            for (const QKeySequence& sequence : keys) {
                QTest::keySequence(&interface_.mainWindow(), sequence);
                // The click is sent after the button was drawn pressed.
                EXPECT_TRUE(QTest::qWaitFor([this] { return !sent_.empty(); }, longestWait));
                EXPECT_THAT(takeSent(), ElementsAre(selector)) << name << " " << title;
            }
        }
    }
}

TEST_F(QtInterfaceAccessTest, SpaceAndEnterPressTheButtonThatHasTheFocus) {
    show();
    for (const char* name : {"startB", "oneB", "outfolderB", "compilingB"}) {
        auto& button = widget<QPushButton>(name);
        int clicks = 0;
        QObject::connect(&button, &QPushButton::clicked, &button, [&] { ++clicks; });
        button.setFocus();
        QTest::keyClick(&button, Qt::Key_Space);
        QTest::keyClick(&button, Qt::Key_Return);
        EXPECT_EQ(clicks, 2) << name;
    }
}

TEST_F(QtInterfaceAccessTest, SpacePlaysWhereNothingElseTakesIt) {
    show();
    offer(controller(), "playPictures:");
    for (const char* name : {"photoSlider", "fpsS", "previewPlayButton"}) {
        widget<QWidget>(name).setFocus();
        QTest::keyClick(&widget<QWidget>(name), Qt::Key_Space);
        EXPECT_THAT(takeSent(), ElementsAre("playPictures:")) << name;
    }
    // As the program does when capture starts.
    outlet<NSWindow>(controller(), "myWindow")->makeFirstResponder(nullptr);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    EXPECT_THAT(takeSent(), ElementsAre("playPictures:"));
    for (const char* name : {"oneB", "slowB", "hInput"}) {
        QTest::keyClick(&widget<QWidget>(name), Qt::Key_Space);
        EXPECT_THAT(takeSent(), IsEmpty()) << name;
    }
    QTest::simulateEvent(&widget<QWidget>("photoSlider"), true, Qt::Key_Space, Qt::NoModifier,
                         QString(), true);
    EXPECT_THAT(takeSent(), IsEmpty());
}

TEST_F(QtInterfaceAccessTest, WhatShowsNoTextHasAToolTip) {
    show();
    std::size_t count = 0;
    for (const QWidget* child : visibleWidgets()) {
        const bool isBar = qobject_cast<const QProgressBar*>(child) != nullptr;
        const bool hasText = !child->property("text").toString().isEmpty();
        if (isBar || (child->focusPolicy() != Qt::NoFocus && !hasText)) {
            EXPECT_FALSE(child->toolTip().isEmpty()) << child->objectName().toStdString();
            ++count;
        }
    }
    EXPECT_GE(count, 5U);
}

TEST_F(QtInterfaceAccessTest, AKeyThatIsHeldDownPressesAButtonOnce) {
    show();
    auto& button = widget<QPushButton>("startB");
    int clicks = 0;
    QObject::connect(&button, &QPushButton::clicked, &button, [&] { ++clicks; });
    button.setFocus();
    const auto hold = [&](int key, Qt::KeyboardModifiers modifiers) {
        clicks = 0;
        QTest::simulateEvent(&button, true, key, modifiers, QString(), false);
        // The click is sent after the button was drawn pressed.
        EXPECT_TRUE(QTest::qWaitFor([&] { return clicks > 0 && !button.isDown(); }, longestWait));
        QTest::simulateEvent(&button, true, key, modifiers, QString(), true);
        QTest::simulateEvent(&button, true, key, modifiers, QString(), true);
        // Nor is it pressed for another click.
        EXPECT_FALSE(button.isDown());
        QTest::simulateEvent(&button, false, key, modifiers, QString(), false);
        return clicks;
    };
    EXPECT_EQ(hold(Qt::Key_T, Qt::ControlModifier), 1);
    EXPECT_EQ(hold(Qt::Key_Return, Qt::NoModifier), 1);
    EXPECT_EQ(hold(Qt::Key_Enter, Qt::KeypadModifier), 1);
    EXPECT_EQ(hold(Qt::Key_S, Qt::AltModifier), 1);
}

TEST_F(QtInterfaceAccessTest, NoTwoThingsOfAWindowShareAShortcut) {
    for (QWidget* window : interface_.windows()) {
        std::multiset<std::string> all;
        const auto add = [&](const QKeySequence& keys) {
            if (!keys.isEmpty()) {
                all.insert(keys.toString().toStdString());
            }
        };
        for (const QAbstractButton* button : window->findChildren<QAbstractButton*>()) {
            if (button->window() == window) {
                add(button->shortcut());
            }
        }
        for (const QLabel* label : window->findChildren<QLabel*>()) {
            if (label->window() == window && label->buddy() != nullptr) {
                add(QKeySequence::mnemonic(label->text()));
            }
        }
        for (const QAction* action : window->findChildren<QAction*>()) {
            add(action->shortcut());
        }
        for (const QMenuBar* bar : window->findChildren<QMenuBar*>()) {
            for (const QAction* menu : bar->actions()) {
                add(QKeySequence::mnemonic(menu->text()));
            }
        }
        expectDistinct(all);
    }
}

TEST_F(QtInterfaceAccessTest, NoTwoItemsOfAMenuShareAMnemonic) {
    const auto menus = interface_.mainWindow().findChildren<QMenu*>();
    EXPECT_GE(menus.size(), 3);
    for (const QMenu* menu : menus) {
        std::multiset<std::string> all;
        for (const QAction* item : menu->actions()) {
            if (!item->isSeparator()) {
                all.insert(QKeySequence::mnemonic(item->text()).toString().toStdString());
            }
        }
        expectDistinct(all);
    }
}

TEST_F(QtInterfaceAccessTest, TheViewsAreEquallyLargeInEveryWindowSizeAndDirection) {
    QWidget& window = interface_.mainWindow();
    outlet<NSButton>(controller(), "outfolderB")->setTitle("/" + std::string(2000, 'x'));
    outlet<NSTextField>(controller(), "currentS")
        ->setStringValue("Displaying frame 2147483647 of 2147483647");
    outlet<NSTextField>(controller(), "timeD")->setStringValue("( t = 3599999 s )");
    outlet<NSPopUpButton>(controller(), "AVDevicePopUp")->addItemWithTitle(std::string(300, 'w'));
    for (const Qt::LayoutDirection direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        window.setLayoutDirection(direction);
        for (const QSize size : {QSize(900, 600), QSize(1600, 1000), QSize(3840, 2160)}) {
            window.resize(size);
            show();
            QCoreApplication::processEvents();
            EXPECT_EQ(window.size(), size);
            const QSize camera = widget<QWidget>("previewView").size();
            EXPECT_EQ(camera, widget<QWidget>("myDisplay").size());
            EXPECT_GE(camera.height(), size.height() / 2);
            for (const QWidget* child : visibleWidgets()) {
                const QRect place(child->mapTo(&window, QPoint()), child->size());
                EXPECT_TRUE(window.rect().contains(place)) << child->objectName().toStdString();
            }
        }
    }
}

TEST_F(QtInterfaceAccessTest, LargeLettersMakeTheLeastWindowLargerAndHideNothing) {
    QWidget& window = interface_.mainWindow();
    const std::map<int, QSize> most{{12, {640, 430}}, {22, {1366, 768}}};
    QSize last(0, 0);
    for (const auto& [pixels, size] : most) {
        QFont font = QApplication::font();
        font.setPixelSize(pixels);
        window.setFont(font);
        show();
        EXPECT_TRUE(QTest::qWaitFor(
            [&] {
                window.resize(1, 1);
                return window.size() == window.minimumSizeHint();
            },
            longestWait));
        EXPECT_GT(window.height(), last.height());
        last = window.size();
        EXPECT_LE(last.width(), size.width());
        EXPECT_LE(last.height(), size.height());
        for (const QWidget* child : visibleWidgets()) {
            const std::string name = child->objectName().toStdString();
            // The bar has no text to hide.
            if (!name.empty() && name != "progressBar") {
                EXPECT_GE(child->width(), child->minimumSizeHint().width()) << name << pixels;
                EXPECT_GE(child->height(), child->minimumSizeHint().height()) << name << pixels;
            }
        }
    }
}

TEST_F(QtInterfaceAccessTest, NoTwoControlsHaveOneName) {
    std::multiset<std::string> names;
    for (const QWidget* child : interface_.mainWindow().findChildren<QWidget*>()) {
        const std::string name = child->objectName().toStdString();
        if (!name.empty() && name.compare(0, 3, "qt_") != 0) {
            names.insert(name);
        }
    }
    EXPECT_GT(names.size(), 20U);
    expectDistinct(names);
}

} // namespace
} // namespace vistrane
