#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <QAbstractNativeEventFilter>
#include <QGuiApplication>
#include <QMainWindow>
#include <QMenuBar>
#include <QTest>
#include <QWindow>
#include <gmock/gmock.h>
#include <xcb/xcb.h>

#include "backends/qt/menus/QtApplication.h"

namespace vistrane {
namespace {

using ::testing::IsEmpty;
using ::testing::IsSupersetOf;

const std::string state = "_NET_WM_STATE";
const std::string skipTaskBar = "_NET_WM_STATE_SKIP_TASKBAR";
const std::string skipPager = "_NET_WM_STATE_SKIP_PAGER";
const std::string managedState = "WM_STATE";

/// What a window manager sees and does, in a second connection to the test's X server.
class WindowManager {
public:
    struct Request {
        std::uint32_t action;
        std::string first;
        std::string second;
    };

    WindowManager() : server_(xcb_connect(nullptr, nullptr)) {
        root_ = xcb_setup_roots_iterator(xcb_get_setup(server_)).data->root;
        const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(server_, root_, XCB_CW_EVENT_MASK, &events);
        roundTrip();
    }
    ~WindowManager() { xcb_disconnect(server_); }
    WindowManager(const WindowManager&) = delete;
    WindowManager& operator=(const WindowManager&) = delete;

    std::vector<std::string> states(WId window) {
        std::vector<std::string> names;
        auto* reply = xcb_get_property_reply(
            server_, xcb_get_property(server_, 0, id(window), atom(state), XCB_ATOM_ATOM, 0, 1024),
            nullptr);
        const auto* atoms = static_cast<const xcb_atom_t*>(xcb_get_property_value(reply));
        for (std::uint32_t i = 0; i < reply->value_len; ++i) {
            names.push_back(name(atoms[i]));
        }
        std::free(reply);
        return names;
    }

    /// From now on the window's states are the window manager's.
    void manage(WId window) {
        setManaged(window, normal);
        takeRequests();
    }

    /// What follows the wish to minimise a window that is managed.
    void minimise(WId window) { setManaged(window, iconic); }

    xcb_atom_t atom(const std::string& atomName) {
        auto* reply = xcb_intern_atom_reply(
            server_,
            xcb_intern_atom(server_, 0, static_cast<std::uint16_t>(atomName.size()),
                            atomName.data()),
            nullptr);
        const xcb_atom_t found = reply->atom;
        std::free(reply);
        return found;
    }

    /// The requests to change states since the last call.
    std::vector<Request> takeRequests() {
        roundTrip();
        std::vector<Request> requests;
        while (xcb_generic_event_t* const event = xcb_poll_for_event(server_)) {
            const auto* message = reinterpret_cast<xcb_client_message_event_t*>(event);
            if ((event->response_type & 0x7f) == XCB_CLIENT_MESSAGE &&
                message->type == atom(state)) {
                const auto& data = message->data.data32;
                requests.push_back({data[0], name(data[1]), name(data[2])});
            }
            std::free(event);
        }
        return requests;
    }

private:
    static constexpr std::uint32_t normal = 1;
    static constexpr std::uint32_t iconic = 3;

    static xcb_window_t id(WId window) { return static_cast<xcb_window_t>(window); }

    void setManaged(WId window, std::uint32_t kind) {
        const std::uint32_t values[] = {kind, XCB_WINDOW_NONE};
        const xcb_atom_t managed = atom(managedState);
        xcb_change_property(server_, XCB_PROP_MODE_REPLACE, id(window), managed, managed, 32, 2,
                            values);
        roundTrip();
    }

    void roundTrip() {
        std::free(xcb_get_input_focus_reply(server_, xcb_get_input_focus(server_), nullptr));
    }

    std::string name(xcb_atom_t atomToName) {
        auto* reply =
            xcb_get_atom_name_reply(server_, xcb_get_atom_name(server_, atomToName), nullptr);
        if (reply == nullptr) {
            return {};
        }
        std::string found(xcb_get_atom_name_name(reply),
                          static_cast<std::size_t>(xcb_get_atom_name_name_length(reply)));
        std::free(reply);
        return found;
    }

    xcb_connection_t* server_;
    xcb_window_t root_ = XCB_WINDOW_NONE;
};

/// Counts how often the toolkit is told that a property of a window has changed.
class PropertyChanges : public QAbstractNativeEventFilter {
public:
    explicit PropertyChanges(xcb_atom_t property) : property_(property) {
        qApp->installNativeEventFilter(this);
    }

    int count() const { return count_; }

    bool nativeEventFilter(const QByteArray& /*type*/, void* message,
                           qintptr* /*result*/) override {
        const auto* event = static_cast<const xcb_generic_event_t*>(message);
        if ((event->response_type & 0x7f) == XCB_PROPERTY_NOTIFY &&
            reinterpret_cast<const xcb_property_notify_event_t*>(event)->atom == property_) {
            ++count_;
        }
        return false;
    }

private:
    xcb_atom_t property_;
    int count_ = 0;
};

class TaskBar : public ::testing::Test {
protected:
    void show() {
        window_.setGeometry(40, 50, 300, 200);
        window_.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_));
    }

    /// The states as the server has them once it has everything that the toolkit sent.
    std::vector<std::string> states(QWidget& window) {
        sync();
        return manager_.states(window.winId());
    }

    std::vector<WindowManager::Request> takeRequests() {
        sync();
        return manager_.takeRequests();
    }

    WindowManager manager_;
    QMainWindow window_;
    bool hasStatusIcon_ = true;
    QtApplication application_{[this] { return hasStatusIcon_; }};

private:
    static void sync() {
        xcb_connection_t* const toolkit =
            qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
        std::free(xcb_get_input_focus_reply(toolkit, xcb_get_input_focus(toolkit), nullptr));
        QCoreApplication::processEvents();
    }
};

TEST_F(TaskBar, AnAccessorysWindowIsShownOutsideOfTheTaskBar) {
    EXPECT_TRUE(application_.setActivationPolicy(NSApplicationActivationPolicyAccessory));
    show();
    EXPECT_THAT(states(window_), IsSupersetOf({skipTaskBar, skipPager}));
}

TEST_F(TaskBar, AWindowShownAgainIsOutsideOfTheTaskBarAgain) {
    application_.setActivationPolicy(NSApplicationActivationPolicyAccessory);
    show();
    window_.hide();
    window_.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_));
    EXPECT_THAT(states(window_), IsSupersetOf({skipTaskBar, skipPager}));
}

TEST_F(TaskBar, ARegularProgramsWindowIsInTheTaskBar) {
    show();
    EXPECT_THAT(states(window_), IsEmpty());
}

TEST_F(TaskBar, AHiddenWindowIsBackWhenItIsShownAfterTheSwitch) {
    application_.setActivationPolicy(NSApplicationActivationPolicyAccessory);
    show();
    window_.hide();
    application_.setActivationPolicy(NSApplicationActivationPolicyRegular);
    window_.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_));
    EXPECT_THAT(states(window_), IsEmpty());
}

TEST_F(TaskBar, TheWindowManagerIsAskedAboutAWindowThatItHas) {
    show();
    manager_.manage(window_.winId());
    application_.setActivationPolicy(NSApplicationActivationPolicyAccessory);
    const auto added = takeRequests();
    ASSERT_EQ(added.size(), 1U);
    EXPECT_EQ(added[0].action, 1U);
    EXPECT_EQ(added[0].first, skipTaskBar);
    EXPECT_EQ(added[0].second, skipPager);

    application_.setActivationPolicy(NSApplicationActivationPolicyRegular);
    const auto removed = takeRequests();
    ASSERT_EQ(removed.size(), 1U);
    EXPECT_EQ(removed[0].action, 0U);
    EXPECT_EQ(removed[0].first, skipTaskBar);
    EXPECT_EQ(removed[0].second, skipPager);
}

TEST_F(TaskBar, AWindowThatWasNeverTakenOutIsLeftAlone) {
    show();
    manager_.manage(window_.winId());
    application_.setActivationPolicy(NSApplicationActivationPolicyRegular);
    EXPECT_TRUE(takeRequests().empty());
}

TEST_F(TaskBar, AMinimisedWindowIsBackInTheTaskBarWhereThereIsNoStatusIcon) {
    hasStatusIcon_ = false;
    application_.setActivationPolicy(NSApplicationActivationPolicyAccessory);
    show();
    const PropertyChanges changes(manager_.atom(managedState));
    manager_.manage(window_.winId());
    application_.miniaturizeAll(nullptr);
    const auto minimised = takeRequests();
    ASSERT_EQ(minimised.size(), 1U);
    EXPECT_EQ(minimised[0].action, 0U);
    EXPECT_EQ(minimised[0].first, skipTaskBar);
    EXPECT_EQ(minimised[0].second, skipPager);

    manager_.minimise(window_.winId());
    ASSERT_TRUE(QTest::qWaitFor([&changes] { return changes.count() == 2; }));
    ASSERT_TRUE(window_.isMinimized());
    EXPECT_TRUE(takeRequests().empty());
    window_.showNormal();
    const auto shownAgain = takeRequests();
    ASSERT_FALSE(shownAgain.empty());
    for (const auto& request : shownAgain) {
        EXPECT_EQ(request.action, 1U);
        EXPECT_EQ(request.first, skipTaskBar);
        EXPECT_EQ(request.second, skipPager);
    }
}

TEST_F(TaskBar, AMinimisedWindowStaysOutWhereThereIsAStatusIcon) {
    application_.setActivationPolicy(NSApplicationActivationPolicyAccessory);
    show();
    application_.miniaturizeAll(nullptr);
    EXPECT_THAT(states(window_), IsSupersetOf({skipTaskBar, skipPager}));
}

TEST_F(TaskBar, TheSwitchNeitherMovesNorHidesAWindow) {
    window_.menuBar()->addMenu("File");
    show();
    const QRect before = window_.geometry();
    application_.setActivationPolicy(NSApplicationActivationPolicyAccessory);
    QCoreApplication::processEvents();
    EXPECT_EQ(window_.geometry(), before);
    EXPECT_TRUE(window_.windowHandle()->isExposed());
    application_.setActivationPolicy(NSApplicationActivationPolicyRegular);
    QCoreApplication::processEvents();
    EXPECT_EQ(window_.geometry(), before);
    EXPECT_TRUE(window_.windowHandle()->isExposed());
}

} // namespace
} // namespace vistrane
