#include "backends/cameras/DemoScene.h"

#include <algorithm>
#include <numeric>

#include <gtest/gtest.h>

namespace vistrane {
namespace {

/// A picture of the scene, with bytes around each plane that must not be written.
class ScenePicture {
public:
    ScenePicture(int width, int height) : width_(width), height_(height) {
        const int chromaWidth = (width + 1) / 2;
        const int chromaHeight = (height + 1) / 2;
        sizes_ = {{{width, height}, {chromaWidth, chromaHeight}, {chromaWidth, chromaHeight}}};
        for (std::size_t plane = 0; plane < bytes_.size(); ++plane) {
            bytes_[plane].assign(
                static_cast<std::size_t>((sizes_[plane].first + gap) * (sizes_[plane].second + 2)),
                untouched);
        }
    }

    void draw(const DemoScene& scene, double moment) {
        DemoScene::Planes planes{};
        for (std::size_t plane = 0; plane < bytes_.size(); ++plane) {
            planes.strides[plane] = sizes_[plane].first + gap;
            planes.rows[plane] = bytes_[plane].data() + planes.strides[plane];
        }
        scene.draw(moment, planes);
    }

    int at(std::size_t plane, int x, int y) const {
        return bytes_[plane][static_cast<std::size_t>((y + 1) * (sizes_[plane].first + gap) + x)];
    }
    /// Whether every sample is in the limited range, and nothing else was written.
    bool isWhole() const {
        for (std::size_t plane = 0; plane < bytes_.size(); ++plane) {
            const auto [width, height] = sizes_[plane];
            for (int y = -1; y <= height; ++y) {
                for (int x = 0; x < width + gap; ++x) {
                    const bool isInside = y >= 0 && y < height && x < width;
                    const int sample = at(plane, x, y);
                    if (isInside ? sample < 16 || sample > 240 : sample != untouched) {
                        return false;
                    }
                }
            }
        }
        return true;
    }
    /// The mean column of the brightest samples of the sky.
    double brightestColumn() const {
        double sum = 0.0;
        int count = 0;
        for (int y = 0; y < height_ / 2; ++y) {
            for (int x = 0; x < width_; ++x) {
                if (at(0, x, y) >= 230) {
                    sum += x;
                    ++count;
                }
            }
        }
        return sum / std::max(1, count);
    }

    bool operator==(const ScenePicture& other) const { return bytes_ == other.bytes_; }

private:
    static constexpr int gap = 5;
    static constexpr std::uint8_t untouched = 3;

    int width_;
    int height_;
    std::array<std::pair<int, int>, 3> sizes_;
    std::array<std::vector<std::uint8_t>, 3> bytes_;
};

TEST(DemoScene, EveryPictureOfASecondDiffersFromTheOneBefore) {
    const DemoScene scene(1280, 720);
    ScenePicture before(1280, 720);
    before.draw(scene, 20.0);
    for (int number = 1; number <= 30; ++number) {
        ScenePicture next(1280, 720);
        next.draw(scene, 20.0 + number / 30.0);
        EXPECT_FALSE(next == before) << number;
        before = next;
    }
    EXPECT_TRUE(before.isWhole());
}

TEST(DemoScene, TheSunGoesFromLeftToRightInAMinuteAndBeginsAgain) {
    const DemoScene scene(640, 360);
    const auto at = [&](double moment) {
        ScenePicture picture(640, 360);
        picture.draw(scene, moment);
        return picture;
    };
    double last = 0.0;
    for (const double moment : {6.0, 18.0, 30.0, 42.0}) {
        const double sun = at(moment).brightestColumn();
        EXPECT_GT(sun, last + 40.0) << moment;
        last = sun;
    }
    EXPECT_TRUE(at(5.0) == at(5.0 + DemoScene::period));
    EXPECT_FALSE(at(5.0) == at(35.0));
}

TEST(DemoScene, ScenesOfAnySizeAreWhole) {
    for (const auto& [width, height] :
         {std::pair(1, 1), {2, 2}, {1, 9}, {9, 1}, {64, 48}, {33, 17}, {321, 181}}) {
        const DemoScene scene(width, height);
        for (double moment = 0.0; moment < DemoScene::period; moment += 3.7) {
            ScenePicture picture(width, height);
            picture.draw(scene, moment);
            EXPECT_TRUE(picture.isWhole()) << width << "x" << height << " " << moment;
        }
    }
}

} // namespace
} // namespace vistrane
