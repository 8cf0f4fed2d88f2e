#include "tests/desktop/DesktopTest.h"

namespace vistrane {
namespace {

using testing::ElementsAre;
using testing::Not;
using testing::StrEq;

/// What assistive technologies read of the window.
class Names : public DesktopTest {
protected:
    /// The names of what takes the focus, in the order of the tab key, one round.
    std::vector<std::string> tabOrder(std::size_t count) {
        std::vector<std::string> order;
        std::string last;
        while (order.size() < count) {
            const auto focused = await("the next control's focus", [&]() -> std::optional<Control> {
                const auto control = firstBelow(root(), [](const Control& each) {
                    return each.is(ControlState::focusable) && each.is(ControlState::focused) &&
                           each.is(ControlState::showing) && each.role() != "list item" &&
                           each.role() != "list";
                });
                return control && control->name() + control->role() != last ? control
                                                                            : std::nullopt;
            });
            last = focused->name() + focused->role();
            order.push_back(focused->role() == "combo box" ? "Camera" : focused->name());
            screen().press({"Tab"});
        }
        return order;
    }

    void expectNamesAndDescriptions(std::size_t atLeast) {
        std::size_t count = 0;
        for (const Control& control : allBelow(root(), [](const Control& each) {
                 const std::string role = each.role();
                 return each.is(ControlState::focusable) && each.is(ControlState::showing) &&
                        role != "list item" && role != "list" && role != "menu item" &&
                        role != "menu" && role != "label";
             })) {
            ++count;
            EXPECT_THAT(control.name(), Not(StrEq(""))) << control.role();
            EXPECT_THAT(control.description(), Not(StrEq("")))
                << control.role() << ' ' << control.name();
        }
        EXPECT_GE(count, atLeast);
    }
};

TEST_F(Names, AndDescriptionsAreOnEverythingThatTakesTheFocus) {
    makeFrames(3);
    storeUsual();
    start({folder, "--demo-camera"});
    awaitFrame(3, 3);
    expectNamesAndDescriptions(13);
}

TEST_F(Names, AndDescriptionsAreInTheTipsToo) {
    start({folder});
    await("the tips", [this] { return windowTitled("Quick Start Tips"); });
    label("1 of 4");
    expectNamesAndDescriptions(16);
}

TEST_F(Names, ReadFromTheLeftColumnToTheRightOneAndToTheBottom) {
    makeFrames(3);
    storeUsual();
    start({folder, "--demo-camera"});
    awaitFrame(3, 3);
    click(find("text", "Hours"));
    await("the focus", [this] { return find("text", "Hours").is(ControlState::focused); });
    EXPECT_THAT(tabOrder(13),
                ElementsAre("Hours", "Minutes", "Seconds", "Start Auto Capture", "Single Frame",
                            "Lower Quality", "Play", "Frame", "Frames per second",
                            "What is a frame rate?", folder, "Compile Movie", "Camera"));
}

} // namespace
} // namespace vistrane
