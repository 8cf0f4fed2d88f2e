#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/support/ControllerTest.h"

namespace vistrane {

/// A controller with a folder of frames "/f/1.png", "/f/2.png", ... that the frame list has read.
class PreviewTest : public ControllerTest {
protected:
    PreviewTest() {
        sim.files().addFolder("/f");
        button("outfolderB").currentTitle = "/f";
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

    std::string shown() { return nameOf(display().image.get()); }
    std::string readOut() { return textField("currentS").text; }
    std::string face() { return nameOf(button("previewPlayButton").image.get()); }
    std::string alternateFace() { return nameOf(button("previewPlayButton").alternateImage.get()); }
    bool isPlaying() { return delegate.playTimer && delegate.playTimer->isValid(); }
};

} // namespace vistrane
