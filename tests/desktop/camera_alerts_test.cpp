#include <chrono>
#include <csignal>
#include <thread>

#include "tests/desktop/DesktopTest.h"

namespace vistrane {
namespace {

using testing::HasSubstr;

class CameraAlerts : public CameraDesktopTest {};

TEST_F(CameraAlerts, ACameraThatIsGoneGivesTwoAlertsInTheirOrder) {
    storeUsual();
    start({folder});
    ASSERT_TRUE(camera("stop"));
    pickCamera("Testcam");
    // The system's error comes first, in its own words, and without the other alert.
    const std::string reason = findFirst("the first alert", [](const Control& control) {
                                   return control.role() == "dialog";
                               }).name();
    EXPECT_THAT(reason, HasSubstr("Testcam"));
    EXPECT_EQ(alert(reason).buttons.size(), 1U);
    EXPECT_EQ(seek("dialog", "Video Device Error"), std::nullopt);
    keepScreen("first");
    answer(reason, alert(reason).buttons.front());
    const std::string message = "Video Device Error";
    EXPECT_EQ(alert(message),
              (ShownAlert{message,
                          "It seems you do NOT have a supported profetional camera or video camera "
                          "connected.\nPlease plugin a camera or video device(DV) and restart "
                          "Vistrane. The best way of solving this issue is: download and install "
                          "the macOS driver of your camera. test it with FaceTime, then start "
                          "Vistrane again.\nIf you just want to make stop motion movie from "
                          "pictures already in your folder, please search app named 'frameweave' "
                          "or 'stillreel'.",
                          {"Got it"}}));
    keepScreen("second");
    answer(message, "Got it");
    EXPECT_THAT(program().log(), HasSubstr("deviceInputWithDevice: failed ("));
    clickButton("Start Auto Capture");
    button("Start Auto Capture");
}

TEST_F(CameraAlerts, ASignalWhileACameraHoldsTheProgramUpSavesTheSettings) {
    storeUsual();
    start({folder});
    fill("Seconds", "42");
    awaitLabel("( t = 42 s )");
    // Longer than the program takes to remember its settings.
    std::this_thread::sleep_for(std::chrono::seconds(2));
    ASSERT_TRUE(camera("freeze"));
    pickCamera("Testcam");
    program().signal(SIGTERM);
    EXPECT_EQ(awaitEnd(), 128 + SIGTERM);
    EXPECT_THAT(stored(), testing::Contains(testing::Pair("iSecond", 42)));
}

} // namespace
} // namespace vistrane
