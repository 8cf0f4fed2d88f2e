#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/support/ControllerTest.h"

namespace vistrane {

/// A controller whose folder "/f" holds frames "1.png", "2.png", ...
class PreviewTest : public ControllerTest {
protected:
    PreviewTest() {
        sim.files().addFolder("/f");
        folderTitle() = "/f";
        slider("photoSlider").setRange(0.0, 0.0);
        slider("fpsS").drag(25.0);
    }

    void TearDown() override {
        interfaceStyle() = "Dark";
        ControllerTest::TearDown();
    }

    /// Adds frames up to that number, and lists the folder.
    void listFrames(int last) {
        for (int number = 1; number <= last; ++number) {
            sim.files().addFile("/f/" + std::to_string(number) + ".png");
        }
        delegate.refreshArray(nullptr);
        sim.takeCalls();
    }

    bool isPlaying() { return delegate.playTimer && delegate.playTimer->isValid(); }
};

} // namespace vistrane
