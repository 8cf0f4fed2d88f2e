#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>

#include "tests/desktop/DesktopTest.h"
#include "tests/desktop/play_button.h"
#include "tests/support/movie_facts.h"

namespace vistrane {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Key;
using testing::Not;
using testing::Pair;

constexpr char placeholder[] = "click to select the output folder";

class WholeRun : public CameraDesktopTest {
protected:
    void pageThroughTheTips();
    void chooseTheFolder();
    void setIntervalAndRate();
    void seeTheCamera();
    void takeASingleFrame();
    void captureThree();
    void browse();
    void playOnceThrough();
    void compileTheMovie();

    int frames() const { return static_cast<int>(namesEndingIn(".png", folder).size()); }
};

void WholeRun::pageThroughTheTips() {
    tips();
    awaitLabel("1 of 4");
    labelFrom("  Benefit from the quality of modern professional cameras");
    keepScreen("tips-1");
    clickButton("Previous");
    awaitLabel("1 of 4");
    clickButton("Next");
    awaitLabel("2 of 4");
    labelFrom("1. Your file saving folder is shared for all projects");
    clickButton("Next");
    awaitLabel("3 of 4");
    labelFrom("3. FPS adjust slider controls the FPS rate");
    clickButton("Next");
    awaitLabel("4 of 4");
    labelFrom("Actually, you can copy your time-lapse photos to the project folder");
    clickButton("Next");
    awaitLabel("4 of 4");
    keepScreen("tips-4");
    clickButton("Previous");
    awaitLabel("3 of 4");
    const Control never = find("check box", "Do not show these tips at start");
    EXPECT_FALSE(never.is(ControlState::checked));
    click(never);
    await("the tick", [&] { return never.is(ControlState::checked); });
    await("the tick in the store", [this] { return stored()["iTip"] == 1; });
    screen().close(tips());
    await("the end of the tips", [this] { return !windowTitled("Quick Start Tips"); });
}

void WholeRun::chooseTheFolder() {
    clickButton(placeholder);
    find("dialog", "Select Output Folder to Save the Capture");
    button("Save to This Folder");
    keepScreen("folder-panel");
    clickButton("Cancel");
    await("the end of the panel",
          [this] { return !windowTitled("Select Output Folder to Save the Capture"); });
    EXPECT_EQ(firstBelow(root(),
                         [](const Control& control) {
                             return control.role() == "dialog" && control.is(ControlState::showing);
                         }),
              std::nullopt);

    clickButton(placeholder);
    typeFolder("/");
    const std::string rejection = "Not a valid working folder";
    EXPECT_EQ(alert(rejection),
              (ShownAlert{rejection,
                          "You canceled saving folder selection or the folder you selected is NOT "
                          "recommended as a working folder. Please make sure it is not located on "
                          "any removable volume and make selection again.",
                          {"Got it"}}));
    keepScreen("folder-rejected");
    answer(rejection, "Got it");

    clickButton(placeholder);
    typeFolder(folder);
    const std::string confirmation = "Destination Path Confirmation:";
    EXPECT_EQ(
        alert(confirmation),
        (ShownAlert{confirmation, "All Capturess will be saved to: " + folder, {"Ok", "Cancel"}}));
    keepScreen("folder-confirmation");
    answer(confirmation, "Cancel");

    clickButton(placeholder);
    typeFolder(folder);
    answer(confirmation, "Ok");
    button(folder);
    EXPECT_NE(contentsOf(settingsFile()).find("iData=@ByteArray("), std::string::npos);
}

void WholeRun::setIntervalAndRate() {
    fill("Seconds", "1");
    awaitLabel("( t = 1 s )");
    setSlider("Frames per second", 10);
    awaitLabel("( fps = 10 )");
}

void WholeRun::seeTheCamera() {
    pickCamera("Testcam");
    const Control view = cameraView();
    // Colour bars, with a field of noise that differs in each picture.
    await("the camera's colours", [&] {
        const QImage picture = pictureOf(view);
        const QRgb yellow = picture.pixel(picture.width() * 3 / 14, picture.height() / 3);
        const QRgb red = picture.pixel(picture.width() * 11 / 14, picture.height() / 3);
        return qRed(yellow) > 200 && qGreen(yellow) > 200 && qBlue(yellow) < 60 &&
               qRed(red) > 200 && qGreen(red) < 60 && qBlue(red) < 60;
    });
    const QImage first = pictureOf(view);
    await("the next picture", [&] { return pictureOf(view) != first; });
    keepScreen("live");
}

void WholeRun::takeASingleFrame() {
    clickButton("Single Frame");
    awaitFrame(1, 1);
    EXPECT_TRUE(isLit(frameView()));
    EXPECT_EQ(frames(), 1);
}

void WholeRun::captureThree() {
    // A frame of the same second would replace the single one.
    const std::string before = namesEndingIn(".png", folder).front();
    await("the next second", [&] {
        const std::time_t now = std::time(nullptr);
        char stamp[32];
        std::strftime(stamp, sizeof stamp, "%H-%M-%S.png", std::gmtime(&now));
        return before.find(stamp) == std::string::npos;
    });
    clickButton("Start Auto Capture");
    button("Stop Auto Capture");
    await("three more frames", [this] { return frames() >= 4; });
    clickButton("Stop Auto Capture");
    button("Start Auto Capture");
    const auto names = namesEndingIn(".png", folder);
    for (const std::string& name : names) {
        EXPECT_THAT(name, testing::MatchesRegex("[0-9][0-9]-[0-9][0-9]-[0-9][0-9]-[0-9][0-9]-"
                                                "[0-9][0-9]-[0-9][0-9].png"));
    }
    // The last one may have been pending when capture was stopped.
    const int count = await("the list of all frames", [this] {
        const auto shown = frameShown();
        const int there = frames();
        return shown && *shown == std::pair(there, there) ? there : 0;
    });
    for (const std::string& name : namesEndingIn(".png", folder)) {
        const auto frame = readFrame(folder + "/" + name);
        ASSERT_TRUE(frame) << name;
        EXPECT_EQ(frame->width, 1280);
        EXPECT_EQ(frame->height, 720);
    }
    keepScreen("captured");
    // Frames that were copied into the folder count like captured ones.
    const std::string source = folder + "/" + names.back();
    for (int number = 1; count + number <= 20; ++number) {
        std::filesystem::copy_file(source, folder + "/99-" + std::to_string(number) + ".png");
    }
    awaitFrame(20, 20);
}

void WholeRun::browse() {
    EXPECT_EQ(find("slider", "Frame").maximum(), 19);
    dragFrameSliderTo(0.0);
    awaitFrame(1, 20);
    screen().press({"Right"});
    awaitFrame(2, 20);
    screen().press({"End"});
    awaitFrame(20, 20);
    dragFrameSliderTo(0.5);
    await("a frame from the middle", [this] {
        const auto shown = frameShown();
        return shown && shown->first > 5 && shown->first < 16;
    });
}

void WholeRun::playOnceThrough() {
    const Control play = button("Play");
    const int start = frameShown()->first;
    const Control readOut = label("Displaying frame " + std::to_string(start) + " of 20");
    std::vector<int> seen;
    const auto look = [&] {
        const auto numbers = frameNumbers(readOut.name());
        if (numbers && numbers->first != (seen.empty() ? start : seen.back())) {
            seen.push_back(numbers->first);
        }
    };
    const Control slider = find("slider", "Frame");
    const int before = slider.valueChanges();
    const auto clicked = std::chrono::steady_clock::now();
    click(play);
    screen().moveTo({2, 2});
    await("the face of playing", [&] {
        look();
        return faceOf(pictureOf(play)) == lightPlaying;
    });
    await("the face of the end", [&] {
        look();
        return faceOf(pictureOf(play)) == lightStopped;
    });
    // 19 steps at 10 frames per second. A busy machine only makes it longer.
    EXPECT_GE(std::chrono::steady_clock::now() - clicked, std::chrono::milliseconds(1900));
    // From the slider's position to the first frame, and on without a step back.
    ASSERT_FALSE(seen.empty());
    EXPECT_LT(seen.front(), start);
    EXPECT_GE(seen.size(), 3U);
    EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end())) << testing::PrintToString(seen);
    EXPECT_EQ(seen.back(), 20);
    EXPECT_EQ(frameShown(), std::pair(20, 20));
    // To the first frame and to each of the others.
    EXPECT_EQ(slider.valueChanges() - before, 20);
}

void WholeRun::compileTheMovie() {
    const Control compile = button("Compile Movie");
    const Control progress = progressBar();
    const int before = progress.valueChanges();
    click(compile);
    // The bar's value is sampled, but no change is missed: one for each frame but the first, and
    // the one that empties the bar.
    std::vector<double> parts;
    await("the end of the compile", [&] {
        parts.push_back(progress.value() / progress.maximum());
        return progress.valueChanges() - before >= 20 && compile.is(ControlState::enabled);
    });
    while (!parts.empty() && parts.back() == 0) {
        parts.pop_back();
    }
    EXPECT_TRUE(std::is_sorted(parts.begin(), parts.end())) << testing::PrintToString(parts);
    EXPECT_TRUE(parts.empty() || parts.back() <= 19.0 / 20.0) << testing::PrintToString(parts);
    EXPECT_EQ(progress.value(), 0);

    const MovieFacts facts = movieFacts(openedMovie());
    const auto movies = namesEndingIn(".mov", folder);
    ASSERT_EQ(movies.size(), 1U);
    EXPECT_THAT(desktop.opened(), ElementsAre(folder + "/" + movies.front()));
    EXPECT_THAT(program().log(), HasSubstr("\nmoviePath=" + folder + "/" + movies.front() + "\n"));
    EXPECT_EQ(facts.codec, "h264");
    EXPECT_EQ(facts.width, 1280);
    EXPECT_EQ(facts.height, 720);
    EXPECT_EQ(facts.timeBase, "1/10");
    EXPECT_EQ(facts.times, frameTimes(20));
    keepScreen("compiled");
}

TEST_F(WholeRun, FromTheFirstStartToAMovieAndBackAgain) {
    start();
    await("the beep", [this] { return screen().bells() == 1; });
    awaitLabel("( t = 5 s )");
    awaitLabel("( fps = 30 )");
    pageThroughTheTips();
    EXPECT_THAT(stored(), AllOf(Contains(Pair("firstTimeRunning", 1)), Contains(Pair("iSlow", 0)),
                                Contains(Pair("iFPS", 30)), Contains(Pair("iHour", 0)),
                                Contains(Pair("iMinue", 0)), Contains(Pair("iSecond", 5)),
                                Contains(Pair("firstTime", 1)), Contains(Pair("iDock", 1)),
                                Not(Contains(Key("iMinute")))));
    keepScreen("first-start");
    chooseTheFolder();
    setIntervalAndRate();
    EXPECT_EQ(screen().bells(), 0);
    EXPECT_EQ(quit(), 0);
    EXPECT_THAT(stored(), AllOf(Contains(Pair("iFPS", 10)), Contains(Pair("iSecond", 1)),
                                Contains(Pair("iMinute", 0)), Contains(Pair("iTip", 1))));

    start();
    button(folder);
    awaitLabel("( t = 1 s )");
    awaitLabel("( fps = 10 )");
    seeTheCamera();
    takeASingleFrame();
    captureThree();
    browse();
    playOnceThrough();
    compileTheMovie();
    const Control quality = find("check box", "Lower Quality");
    click(quality);
    await("the tick", [&] { return quality.is(ControlState::checked); });
    EXPECT_EQ(quit(), 0);

    start();
    button(folder);
    awaitLabel("( t = 1 s )");
    awaitLabel("( fps = 10 )");
    awaitFrame(20, 20);
    EXPECT_TRUE(find("check box", "Lower Quality").is(ControlState::checked));
    EXPECT_EQ(windowTitled("Quick Start Tips"), std::nullopt);
    EXPECT_EQ(screen().bells(), 0);
    keepScreen("restored");
    EXPECT_EQ(namesIn(folder).size(), 21U) << testing::PrintToString(namesIn(folder));
}

} // namespace
} // namespace vistrane
