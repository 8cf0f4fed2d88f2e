#include <filesystem>

#include "tests/desktop/DesktopTest.h"

namespace vistrane {
namespace {

/// The line below the controls while frames are captured.
class CaptureSign : public DesktopTest {
protected:
    void startCapturing() {
        storeUsual();
        start({folder, "--demo-camera"});
        pickCamera("Demo Camera");
        clickButton("Start Auto Capture");
        awaitText("Capturing every 1 s, next in 1 s, ");
    }
    std::string text() {
        const auto sign = firstBelow(root(), [](const Control& control) {
            return control.role() == "label" && control.name().starts_with("Capturing every");
        });
        return sign ? sign->name() : "";
    }
    void awaitText(const std::string& part) {
        await("the sign's \"" + part + "\"",
              [&] { return text().find(part) != std::string::npos; });
    }
};

TEST_F(CaptureSign, TellsOfTheIntervalInForceAndOfTheStillsUntilTheEnd) {
    startCapturing();
    awaitText(" 2 saved");
    keepScreen("capturing");
    // The read-out follows the fields, the schedule does not.
    fill("Seconds", "7");
    awaitLabel("( t = 7 s )");
    awaitText("Capturing every 1 s");
    clickButton("Stop Auto Capture");
    await("the end of the sign", [this] { return text().empty(); });
    clickButton("Start Auto Capture");
    awaitText("Capturing every 7 s");
}

TEST_F(CaptureSign, WarnsOfStillsThatAreNotSaved) {
    startCapturing();
    std::filesystem::rename(folder, folder + " away");
    awaitText(" not saved (folder missing)");
    keepScreen("not saved");
    // Nothing else tells of it.
    button("Stop Auto Capture");
    const std::string before = text();
    std::filesystem::rename(folder + " away", folder);
    const auto saved = [](const std::string& sign) { return sign.substr(0, sign.find(" saved")); };
    await("another still", [&] { return saved(text()) != saved(before); });
    awaitText(" not saved (folder missing)");
}

TEST_F(CaptureSign, TellsThatADialogHoldsTheCaptureBack) {
    startCapturing();
    clickButton(folder);
    find("dialog", "Select Output Folder to Save the Capture");
    awaitText("held back by the open dialog");
    keepScreen("held back");
    screen().press({"Escape"});
    awaitText("next in");
}

} // namespace
} // namespace vistrane
