#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vistrane {

/// What the demo camera sees: clouds, the sun on its way, hills, and a post whose shadow wanders
/// over the ground. A day takes a minute, so that stills of every second or two make a time-lapse.
///
/// Drawing is meant for thirty pictures a second beside everything else: what does not change is
/// made once, and a picture of 1280 x 720 takes about a millisecond. Any thread.
class DemoScene {
public:
    /// In pixels, at least 1 x 1.
    DemoScene(int width, int height);

    /// Planar 4:2:0, BT.709, limited range: luma of the scene's size, then both chroma planes of
    /// half that, rounded up. The strides are in bytes.
    struct Planes {
        std::array<std::uint8_t*, 3> rows;
        std::array<std::ptrdiff_t, 3> strides;
    };

    /// Draws every pixel as it is `seconds` after the beginning, which is 0 or more. Begins again
    /// after a minute.
    void draw(double seconds, const Planes& planes) const;

    static constexpr double period = 60.0;

private:
    struct Colour {
        double y, u, v;
    };
    struct Moment;

    static double densityAt(double across, double down);
    void makeClouds();
    void makeSun();
    void makeGround();
    Moment momentOf(double seconds) const;
    void drawSky(const Moment& moment, const Planes& planes) const;
    void drawSun(const Moment& moment, double dy, int step, std::uint8_t colour,
                 std::uint8_t* row) const;
    void drawHills(const Moment& moment, const Planes& planes) const;
    void drawGround(const Moment& moment, const Planes& planes) const;
    void drawPost(const Moment& moment, const Planes& planes) const;
    void shade(const Planes& planes, int row, double left, double right, std::uint16_t share) const;

    static Colour mixed(const Colour& from, const Colour& to, double share);

    const int width_;
    const int height_;
    /// The first row of the ground.
    const int horizon_;
    /// The clouds repeat after so many columns.
    const int tile_;
    const double sunReach_;
    /// How much of the sun's colour a pixel has, of 256, by the square of its distance.
    std::array<std::uint16_t, 4096> sunShares_{};
    /// How dense the clouds are, 0 to 255; a tile and a picture wide, so that no row wraps.
    std::vector<std::uint8_t> clouds_;
    std::vector<std::uint8_t> ground_;
    /// The first row of the hills, by column.
    std::vector<int> hillTops_;
};

} // namespace vistrane
