#include <filesystem>

#include "tests/desktop/DesktopTest.h"
#include "tests/support/movie_facts.h"

namespace vistrane {
namespace {

class Damage : public DesktopTest {};

TEST_F(Damage, OfAFrameEmptiesThePreviewAndStopsNothing) {
    makeFrames(4);
    const std::string good = contentsOf(folder + "/003.png");
    writeFile(folder + "/002.png", "this is no picture");
    std::string corrupt = good;
    corrupt.replace(corrupt.find("IDAT") + 6, 4, "****");
    writeFile(folder + "/003.png", corrupt);
    writeFile(folder + "/004.png", damaged::truncated(good));
    storeUsual(10);
    start({folder});
    awaitFrame(4, 4);
    const Control view = frameView();
    const auto isEmpty = [&] {
        const QImage picture = pictureOf(view);
        return picture.pixelColor(picture.width() / 2, picture.height() / 4) == QColor(Qt::black);
    };
    await("the empty view", isEmpty);
    dragFrameSliderTo(0.0);
    awaitFrame(1, 4);
    await("the good frame", [&] { return !isEmpty(); });
    keepScreen("good");
    screen().press({"Right"});
    awaitFrame(2, 4);
    await("the empty view", isEmpty);
    keepScreen("corrupt");
    clickButton("Play");
    awaitFrame(4, 4);
    clickButton("Compile Movie");
    EXPECT_EQ(movieFacts(openedMovie()).times.size(), 1U);
}

TEST_F(Damage, OfTheFolderPutsThePlaceholderBack) {
    storeUsual();
    start({folder});
    EXPECT_EQ(quit(), 0);
    std::filesystem::remove_all(folder);
    start();
    button("click to select the output folder");
}

} // namespace
} // namespace vistrane
