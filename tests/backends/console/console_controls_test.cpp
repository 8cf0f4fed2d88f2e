#include <limits>

#include <gtest/gtest.h>

#include "backends/console/ConsoleApplication.h"
#include "backends/console/ConsoleInterface.h"
#include "backends/console/ConsoleOpenPanel.h"
#include "backends/console/ConsoleWorkspace.h"

namespace vistrane {
namespace {

TEST(ConsoleButton, AClickSendsTheActionWithTheButton) {
    ConsoleButton button("title");
    NSObject* sender = nullptr;
    button.setAction([&](NSObject* from) { sender = from; });
    button.performClick();
    EXPECT_EQ(sender, &button);
    EXPECT_EQ(button.state(), 0);
}

TEST(ConsoleButton, ADisabledButtonSendsNothing) {
    ConsoleButton button("title", ConsoleButton::Kind::checkBox);
    int clicks = 0;
    button.setAction([&](NSObject*) { ++clicks; });
    button.setEnabled(false);
    EXPECT_FALSE(button.isEnabled());
    button.performClick();
    EXPECT_EQ(clicks, 0);
    EXPECT_EQ(button.state(), 0);
    button.setEnabled(true);
    button.performClick();
    EXPECT_EQ(clicks, 1);
}

TEST(ConsoleButton, ACheckBoxTurnsOverBeforeItsAction) {
    ConsoleButton button("", ConsoleButton::Kind::checkBox);
    NSInteger seen = -1;
    button.setAction([&](NSObject*) { seen = button.state(); });
    button.performClick();
    EXPECT_EQ(seen, 1);
    button.performClick();
    EXPECT_EQ(seen, 0);
}

TEST(ConsoleButton, AClickWithoutAnActionIsHarmless) {
    ConsoleButton("").performClick();
}

TEST(ConsoleTextField, TypingSendsTheActionOnce) {
    ConsoleTextField field;
    int sent = 0;
    std::string seen;
    field.setAction([&](NSObject* sender) {
        EXPECT_EQ(sender, &field);
        seen = field.stringValue();
        ++sent;
    });
    field.userTypes("7x");
    EXPECT_EQ(sent, 1);
    EXPECT_EQ(seen, "7x");
    EXPECT_EQ(field.intValue(), 7);
}

TEST(ConsoleTextField, AnEditIsEndedByTheWindow) {
    const auto field = std::make_shared<ConsoleTextField>();
    ConsoleWindow window;
    window.addField(field);
    int sent = 0;
    field->setAction([&](NSObject*) {
        ++sent;
        window.makeFirstResponder(nullptr);
    });
    field->userEdits("12");
    EXPECT_EQ(field->intValue(), 12);
    EXPECT_EQ(sent, 0);
    EXPECT_TRUE(window.makeFirstResponder(field.get()));
    EXPECT_EQ(sent, 0);
    EXPECT_TRUE(window.makeFirstResponder(nullptr));
    EXPECT_EQ(sent, 1);
    EXPECT_TRUE(window.makeFirstResponder(nullptr));
    EXPECT_EQ(sent, 1);
}

TEST(ConsoleTextField, SettingAValueGivesAnEditUp) {
    ConsoleTextField field;
    int sent = 0;
    field.setAction([&](NSObject*) { ++sent; });
    field.userEdits("12");
    field.setIntValue(5);
    field.endEditing();
    EXPECT_EQ(sent, 0);
    EXPECT_EQ(field.stringValue(), "5");
}

TEST(ConsoleSlider, AMoveIsLimitedAndSendsTheAction) {
    ConsoleSlider slider(1.0, 60.0, 25.0);
    double seen = 0.0;
    slider.setAction([&](NSObject*) { seen = slider.doubleValue(); });
    slider.userMoves(12.5);
    EXPECT_EQ(seen, 12.5);
    EXPECT_EQ(slider.intValue(), 13);
    slider.userMoves(1000.0);
    EXPECT_EQ(seen, 60.0);
    slider.userMoves(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(seen, 60.0);
}

TEST(ConsolePopUpButton, PickingTheSelectedItemSendsTheActionToo) {
    ConsolePopUpButton popUp;
    popUp.addItemWithTitle("A");
    int sent = 0;
    popUp.setAction([&](NSObject*) { ++sent; });
    EXPECT_TRUE(popUp.userPicks(0));
    EXPECT_TRUE(popUp.userPicks(0));
    EXPECT_EQ(sent, 2);
}

TEST(ConsolePopUpButton, AnItemThatIsNotThereCannotBePicked) {
    ConsolePopUpButton popUp;
    popUp.addItemWithTitle("A");
    int sent = 0;
    popUp.setAction([&](NSObject*) { ++sent; });
    EXPECT_FALSE(popUp.userPicks(1));
    EXPECT_FALSE(popUp.userPicks(-1));
    EXPECT_EQ(sent, 0);
    EXPECT_EQ(popUp.indexOfSelectedItem(), 0);
}

TEST(ConsoleProgressIndicator, TellsItsObserver) {
    ConsoleProgressIndicator indicator;
    double value = -1.0;
    double maximum = -1.0;
    indicator.setObserver([&](double newValue, double newMaximum) {
        value = newValue;
        maximum = newMaximum;
    });
    indicator.setMaxValue(6.0);
    indicator.setDoubleValue(2.0);
    EXPECT_EQ(value, 2.0);
    EXPECT_EQ(maximum, 6.0);
}

TEST(ConsoleView, KeepsWhatItsLayerWasTold) {
    ConsoleView view;
    view.setWantsLayer(true);
    const auto layer = std::dynamic_pointer_cast<ConsoleLayer>(view.layer());
    ASSERT_TRUE(layer);
    layer->setFrame({{1, 2}, {3, 4}});
    layer->setBackgroundColor(CGColorGetConstantColor(kCGColorBlack));
    layer->addSublayer(std::make_shared<ConsoleLayer>());
    EXPECT_EQ(layer->frame(), (CGRect{{1, 2}, {3, 4}}));
    EXPECT_EQ(layer->backgroundColor(), CGColorGetConstantColor(kCGColorBlack));
    EXPECT_EQ(layer->sublayers().size(), 1U);
    EXPECT_EQ(view.bounds(), NSZeroRect);
    view.setWantsLayer(false);
    EXPECT_EQ(view.layer(), nullptr);
}

TEST(ConsoleOpenPanel, IsAlwaysCancelled) {
    ConsoleOpenPanel panel;
    EXPECT_EQ(panel.runModal(), NSModalResponseCancel);
    EXPECT_EQ(panel.URL(), std::nullopt);
}

TEST(ConsoleWorkspace, HandsAddressesOn) {
    std::string opened;
    ConsoleWorkspace workspace([&](const NSURL& url) {
        opened = url.absoluteString();
        return false;
    });
    EXPECT_FALSE(workspace.openURL(NSURL::fileURLWithPath("/a.mov")));
    EXPECT_EQ(opened, "file:///a.mov");
    EXPECT_FALSE(ConsoleWorkspace({}).openURL(NSURL::fileURLWithPath("/a.mov")));
}

} // namespace
} // namespace vistrane
