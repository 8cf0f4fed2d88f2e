#pragma once

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "backends/sim/Sim.h"
#include "core/app/AppDelegate.h"
#include "core/app/appearance.h"
#include "core/compiler/compile_job.h"
#include "tests/support/procedure.h"

namespace vistrane {

/// The folder button's title while no folder is chosen.
inline constexpr char placeholder[] = "click to select the output folder";

/// A controller whose outlets are connected to a sim's controls. Every test also proves that no
/// interface's contract was breached.
class ControllerTest : public ::testing::Test {
protected:
    ControllerTest() {
        interfaceStyle() = "Dark";
        compileFrameRate() = 25;
        delegate.connectInterface(sim.nib());
    }

    void TearDown() override {
        sim.threads().end();
        EXPECT_THAT(sim.misuses(), ::testing::IsEmpty());
    }

    /// The folder exists, and a bookmark of it is saved.
    void saveFolder(const std::string& path = "/f") {
        sim.files().addFolder(path);
        sim.defaults().values["iData"] = SimBookmarks::of(path);
    }

    /// Starts the program and forgets the calls that this took.
    void launch() {
        delegate.awakeFromNib();
        delegate.applicationDidFinishLaunching();
        sim.takeCalls();
    }

    /// Starts the program with one camera and opens it.
    void launchWithCamera() {
        sim.cameras().add("Camera");
        launch();
        delegate.selectAVDevice(nullptr);
        sim.takeCalls();
    }

    static void expectStandardAlert(const SimShownAlert& alert, const std::string& message,
                                    const std::string& informativeText) {
        EXPECT_EQ(alert.message, message);
        EXPECT_EQ(alert.informativeText, informativeText);
        EXPECT_THAT(alert.buttons, ::testing::ElementsAre("Got it"));
        EXPECT_TRUE(alert.transparentTitleBar);
        EXPECT_FALSE(alert.error);
    }
    void expectNoMessage() {
        EXPECT_THAT(sim.alerts().shown(), ::testing::IsEmpty());
        EXPECT_THAT(sim.logLines(), ::testing::IsEmpty());
    }

    std::vector<std::string> takeProcedure(const std::vector<std::string>& others = {}) {
        return vistrane::takeProcedure(sim, others);
    }
    SimTextField& textField(const std::string& name) { return sim.nib().textField(name); }
    SimButton& button(const std::string& name) { return sim.nib().button(name); }
    SimSlider& slider(const std::string& name) { return sim.nib().slider(name); }
    SimPopUpButton& devicePopUp() { return sim.nib().popUp("AVDevicePopUp"); }
    SimImageView& display() { return sim.nib().imageView("myDisplay"); }
    SimProgressIndicator& progressBar() { return sim.nib().progress("progressBar"); }
    std::string& folderTitle() { return button("outfolderB").currentTitle; }
    std::string shown() { return nameOf(display().image.get()); }
    std::string readOut() { return textField("currentS").text; }
    /// The play button's two pictures.
    std::string faces() {
        const SimButton& play = button("previewPlayButton");
        return nameOf(play.image.get()) + " " + nameOf(play.alternateImage.get());
    }

    void setInterval(const std::string& hours, const std::string& minutes,
                     const std::string& seconds) {
        textField("hInput").text = hours;
        textField("mInput").text = minutes;
        textField("sInput").text = seconds;
    }
    /// What the three interval fields show.
    std::string interval() {
        return textField("hInput").text + ":" + textField("mInput").text + ":" +
               textField("sInput").text;
    }

    Sim sim;
    AppDelegate delegate{sim.platform()};
};

} // namespace vistrane
