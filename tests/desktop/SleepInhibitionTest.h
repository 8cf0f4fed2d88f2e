#pragma once

#include <string>

#include "tests/desktop/DesktopTest.h"

namespace vistrane {

/// The machine is kept awake as long as the capture timer is valid. `Base` is a test of the window.
template <typename Base>
class SleepInhibitionTest : public Base {
protected:
    SleepInhibitionTest() { services().offerInhibition(); }

    FakeServices& services() { return this->desktop.services(); }

    void startCapturing(const std::string& camera) {
        this->storeUsual();
        this->start({this->folder, "--demo-camera"});
        this->pickCamera(camera);
        EXPECT_EQ(services().inhibitions(), 0);
        this->clickButton("Start Auto Capture");
        await("the request to stay awake", [this] { return services().inhibitions() == 1; });
    }

    /// While capturing goes on.
    void expectIsHeld() {
        this->button("Stop Auto Capture");
        // Longer than the program takes to notice the end of a capture.
        std::this_thread::sleep_for(std::chrono::milliseconds(1500));
        EXPECT_EQ(services().inhibitions(), 1);
    }

    void awaitRelease() {
        await("the end of the request", [this] { return services().inhibitions() == 0; });
    }

    void stopCapturing() {
        this->clickButton("Stop Auto Capture");
        awaitRelease();
    }
};

} // namespace vistrane
