#include <cstdint>
#include <cstdlib>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <QGuiApplication>
#include <QMainWindow>
#include <QMenuBar>
#include <QTest>
#include <QWindow>
#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include "backends/qt/menus/QtApplication.h"
#include "backends/qt/menus/TaskBar.h"
#include "tests/backends/qt/longest_wait.h"

namespace vistrane {
namespace {

template <typename Reply>
std::unique_ptr<Reply, decltype(&std::free)> owned(Reply* reply) {
    return {reply, &std::free};
}

/// The states that a real window manager gives the application's window.
class TaskBar : public ::testing::Test {
protected:
    void show() {
        window_.setGeometry(40, 50, 300, 200);
        window_.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_, longestWait));
        ASSERT_TRUE(QTest::qWaitFor([this] { return isManaged(); }, longestWait));
    }

    /// Whether the window manager manages and shows it.
    bool isManaged() const {
        constexpr std::uint32_t normal = 1;
        const auto state = property("WM_STATE", XCB_GET_PROPERTY_TYPE_ANY);
        return !state.empty() && state.front() == normal;
    }

    void becomeAccessory() {
        EXPECT_TRUE(application_.setActivationPolicy(NSApplicationActivationPolicyAccessory));
    }
    void becomeRegular() {
        EXPECT_TRUE(application_.setActivationPolicy(NSApplicationActivationPolicyRegular));
    }

    bool waitFor(const char* state) {
        return QTest::qWaitFor([&] { return states().contains(state); }, longestWait);
    }
    bool waitUntilOut() { return waitFor(skipTaskBar) && waitFor(skipPager); }
    bool waitUntilIn() {
        return QTest::qWaitFor(
            [this] { return !states().contains(skipTaskBar) && !states().contains(skipPager); },
            longestWait);
    }

    /// Waits until the window manager has handled all earlier requests.
    void settle() {
        window_.showMaximized();
        ASSERT_TRUE(waitFor("_NET_WM_STATE_MAXIMIZED_VERT"));
    }

    std::set<std::string> states() {
        std::set<std::string> names;
        for (const xcb_atom_t state : property("_NET_WM_STATE", XCB_ATOM_ATOM)) {
            const auto reply =
                owned(xcb_get_atom_name_reply(server_, xcb_get_atom_name(server_, state), nullptr));
            names.emplace(xcb_get_atom_name_name(reply.get()),
                          xcb_get_atom_name_name_length(reply.get()));
        }
        return names;
    }

    static constexpr char skipTaskBar[] = "_NET_WM_STATE_SKIP_TASKBAR";
    static constexpr char skipPager[] = "_NET_WM_STATE_SKIP_PAGER";

    QMainWindow window_;
    bool hasStatusIcon_ = true;
    QtApplication application_{[this] { return hasStatusIcon_; }};

private:
    xcb_window_t id() const { return static_cast<xcb_window_t>(window_.winId()); }
    xcb_atom_t atom(const std::string& name) const {
        return owned(xcb_intern_atom_reply(server_,
                                           xcb_intern_atom(server_, 0,
                                                           static_cast<std::uint16_t>(name.size()),
                                                           name.data()),
                                           nullptr))
            ->atom;
    }
    std::vector<std::uint32_t> property(const char* name, xcb_atom_t type) const {
        const auto reply = owned(xcb_get_property_reply(
            server_, xcb_get_property(server_, 0, id(), atom(name), type, 0, 1024), nullptr));
        const auto* first = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
        return {first, first + reply->value_len};
    }
    xcb_connection_t* const server_ =
        qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
};

TEST_F(TaskBar, AnAccessorysWindowIsOutsideOfTheTaskBarEachTimeItIsShown) {
    becomeAccessory();
    show();
    EXPECT_TRUE(waitUntilOut());
    window_.hide();
    // The window manager takes the states away from a window that was hidden.
    ASSERT_TRUE(QTest::qWaitFor([this] { return !isManaged(); }, longestWait));
    show();
    EXPECT_TRUE(waitUntilOut());
}

TEST_F(TaskBar, ARegularProgramsWindowIsInTheTaskBar) {
    show();
    settle();
    EXPECT_TRUE(waitUntilIn());
}

TEST_F(TaskBar, AHiddenWindowIsBackWhenItIsShownAfterTheSwitch) {
    becomeAccessory();
    show();
    window_.hide();
    becomeRegular();
    show();
    settle();
    EXPECT_TRUE(waitUntilIn());
}

TEST_F(TaskBar, AWindowThatSomebodyElseTookOutIsLeftAlone) {
    show();
    setInTaskBar(*window_.windowHandle(), false);
    ASSERT_TRUE(waitUntilOut());
    becomeRegular();
    settle();
    EXPECT_TRUE(states().contains(skipTaskBar));
    EXPECT_TRUE(states().contains(skipPager));
}

TEST_F(TaskBar, AMinimisedWindowIsInTheTaskBarWhereThereIsNoStatusIcon) {
    hasStatusIcon_ = false;
    becomeAccessory();
    show();
    ASSERT_TRUE(waitUntilOut());
    application_.miniaturizeAll(nullptr);
    ASSERT_TRUE(waitFor("_NET_WM_STATE_HIDDEN"));
    EXPECT_TRUE(waitUntilIn());
    window_.showNormal();
    EXPECT_TRUE(waitUntilOut());
}

TEST_F(TaskBar, AMinimisedWindowStaysOutWhereThereIsAStatusIcon) {
    becomeAccessory();
    show();
    application_.miniaturizeAll(nullptr);
    ASSERT_TRUE(waitFor("_NET_WM_STATE_HIDDEN"));
    EXPECT_TRUE(waitUntilOut());
}

TEST_F(TaskBar, AShownWindowFollowsEachSwitchAndIsNeitherMovedNorHidden) {
    window_.menuBar()->addMenu("File");
    show();
    const QRect before = window_.geometry();
    becomeAccessory();
    ASSERT_TRUE(waitUntilOut());
    EXPECT_EQ(window_.geometry(), before);
    EXPECT_TRUE(window_.windowHandle()->isExposed());
    becomeRegular();
    ASSERT_TRUE(waitUntilIn());
    EXPECT_EQ(window_.geometry(), before);
    EXPECT_TRUE(window_.windowHandle()->isExposed());
}

} // namespace
} // namespace vistrane
