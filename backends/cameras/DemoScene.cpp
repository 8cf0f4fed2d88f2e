#include "backends/cameras/DemoScene.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace vistrane {

namespace {

constexpr double pi = std::numbers::pi;

constexpr double cloudLuma = 228.0;
constexpr std::uint8_t neutral = 128;

/// A fixed random number from 0 to 1 for a point of a grid.
double noiseAt(std::uint32_t x, std::uint32_t y) {
    std::uint32_t number = x * 0x9e3779b1U ^ (y * 0x85ebca77U + 0x27d4eb2fU);
    number = (number ^ (number >> 15U)) * 0x2c1b3c6dU;
    number = (number ^ (number >> 12U)) * 0x297a2d39U;
    number ^= number >> 15U;
    return static_cast<double>(number & 0xffffU) / 65535.0;
}

/// Between the points of a grid of `columns` that repeats from left to right.
double smoothNoise(double x, double y, std::uint32_t columns, std::uint32_t seed) {
    const double left = std::floor(x);
    const double top = std::floor(y);
    const auto eased = [](double share) { return share * share * (3.0 - 2.0 * share); };
    const double across = eased(x - left);
    const double down = eased(y - top);
    const auto column = static_cast<std::uint32_t>(left);
    const auto row = static_cast<std::uint32_t>(top) + seed;
    const auto at = [&](std::uint32_t dx, std::uint32_t dy) {
        return noiseAt((column + dx) % columns, row + dy);
    };
    return std::lerp(std::lerp(at(0, 0), at(1, 0), across), std::lerp(at(0, 1), at(1, 1), across),
                     down);
}

std::uint8_t byte(double value) {
    return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0, 255.0)));
}

std::size_t index(int row, int width, int column) {
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(width) +
           static_cast<std::size_t>(column);
}

/// `share` is of 256. In 16 bits, so that the compiler handles many pixels at once.
std::uint8_t blended(std::uint8_t from, std::uint8_t to, std::uint16_t share) {
    const auto sum = static_cast<std::uint16_t>(from * (256 - share) + to * share);
    return static_cast<std::uint8_t>(sum >> 8U);
}

} // namespace

/// What holds for a whole picture.
struct DemoScene::Moment {
    /// Of the day, from sunrise, 0, to sunset, 1.
    double phase = 0.0;
    /// 0 at sunrise and sunset, 1 at noon.
    double noon = 0.0;
    double sunX = 0.0;
    double sunY = 0.0;
    /// By how many columns the clouds have moved.
    int drift = 0;
};

DemoScene::DemoScene(int width, int height)
    : width_(width), height_(height), horizon_(height * 5 / 8), tile_(2 * width),
      sunReach_(0.2 * width) {
    makeClouds();
    makeSun();
    makeGround();
}

/// Of the clouds, 0 to 255, at a place of the sky from 0 to 1; repeats from left to right.
double DemoScene::densityAt(double across, double down) {
    double density = 0.0;
    double weight = 0.5;
    for (std::uint32_t octave = 0; octave < 5; ++octave) {
        const std::uint32_t columns = 8U << octave;
        density += weight * smoothNoise(across * columns, down * 5.0 * (1U << octave), columns,
                                        1000 * octave);
        weight *= 0.5;
    }
    // Clear gaps between the clouds, and haze above the horizon.
    const double cloud = std::clamp((density - 0.5) * 5.0, 0.0, 0.95);
    const double haze = 0.35 * std::pow(down, 4.0);
    return 255.0 * std::max(cloud, haze);
}

/// The finest clouds are larger than the distance of the samples, between which it interpolates.
void DemoScene::makeClouds() {
    constexpr int distance = 4;
    const int columns = tile_ / distance + 2;
    const int rows = horizon_ / distance + 2;
    std::vector<int> samples(index(rows, columns, 0));
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            samples[index(row, columns, column)] = static_cast<int>(
                densityAt(static_cast<double>(column * distance % tile_) / tile_,
                          std::min(1.0, static_cast<double>(row * distance) / horizon_)));
        }
    }
    const int wide = tile_ + width_;
    clouds_.resize(index(std::max(1, horizon_), wide, 0));
    for (int row = 0; row < horizon_; ++row) {
        const int* const above = &samples[index(row / distance, columns, 0)];
        const int* const below = above + columns;
        const int down = row % distance;
        for (int x = 0; x < tile_; ++x) {
            const int column = x / distance;
            const int across = x % distance;
            const auto between = [&](const int* from) {
                return from[column] * (distance - across) + from[column + 1] * across;
            };
            clouds_[index(row, wide, x)] = static_cast<std::uint8_t>(
                (between(above) * (distance - down) + between(below) * down) /
                (distance * distance));
        }
        const auto* const first = &clouds_[index(row, wide, 0)];
        std::copy_n(first, width_, &clouds_[index(row, wide, tile_)]);
    }
}

/// By the square of the distance from the sun's centre.
void DemoScene::makeSun() {
    const double reach = sunReach_;
    const double disc = 0.032 * width_;
    for (std::size_t entry = 0; entry < sunShares_.size(); ++entry) {
        const double distance =
            reach * std::sqrt(static_cast<double>(entry) / static_cast<double>(sunShares_.size()));
        const double glow = 1.0 - distance / reach;
        const double share =
            std::max(std::clamp(disc - distance + 0.5, 0.0, 1.0), 0.75 * glow * glow);
        sunShares_[entry] = static_cast<std::uint16_t>(256.0 * share);
    }
}

void DemoScene::makeGround() {
    const int rows = height_ - horizon_;
    ground_.resize(index(rows, width_, 0));
    for (int row = 0; row < rows; ++row) {
        // Nearer rows are lighter and coarser.
        const double near = (row + 1.0) / rows;
        const double finest = 0.02 / (0.1 + near);
        const double down = 20.0 * std::log2(1.0 + 8.0 * near);
        for (int column = 0; column < width_; ++column) {
            const double grain = smoothNoise(column * finest, down, 1U << 20U, 7);
            ground_[index(row, width_, column)] = byte(70.0 + 45.0 * near + 36.0 * grain);
        }
    }
    hillTops_.resize(static_cast<std::size_t>(width_));
    for (int column = 0; column < width_; ++column) {
        const double across = static_cast<double>(column) / width_;
        const double height = 0.06 + 0.05 * std::sin(2.3 * pi * across + 0.6) +
                              0.03 * std::sin(6.1 * pi * across + 2.0);
        hillTops_[static_cast<std::size_t>(column)] =
            horizon_ - static_cast<int>(std::max(0.01, height) * horizon_);
    }
}

DemoScene::Colour DemoScene::mixed(const Colour& from, const Colour& to, double share) {
    return {std::lerp(from.y, to.y, share), std::lerp(from.u, to.u, share),
            std::lerp(from.v, to.v, share)};
}

DemoScene::Moment DemoScene::momentOf(double seconds) const {
    // The first picture shows the sun well above the horizon.
    constexpr double start = 0.12;
    Moment moment;
    moment.phase = std::fmod(seconds / period + start, 1.0);
    moment.noon = std::sin(pi * moment.phase);
    moment.sunX = width_ * (0.08 + 0.84 * moment.phase);
    moment.sunY = horizon_ * (1.02 - 0.82 * moment.noon);
    moment.drift = static_cast<int>(moment.phase * tile_) % tile_;
    return moment;
}

void DemoScene::draw(double seconds, const Planes& planes) const {
    const Moment moment = momentOf(seconds);
    drawSky(moment, planes);
    drawHills(moment, planes);
    drawGround(moment, planes);
    drawPost(moment, planes);
}

/// Blends a colour into a row, which has one sample for each `step` columns of the scene.
void DemoScene::drawSun(const Moment& moment, double dy, int step, std::uint8_t colour,
                        std::uint8_t* row) const {
    const double squaredReach = sunReach_ * sunReach_;
    if (dy * dy >= squaredReach) {
        return;
    }
    const double half = std::sqrt(squaredReach - dy * dy);
    const int first = std::max(0, static_cast<int>((moment.sunX - half) / step) + 1);
    const int last = std::min((width_ + step - 1) / step,
                              static_cast<int>(std::max(0.0, moment.sunX + half) / step));
    const auto most = static_cast<std::uint32_t>(sunShares_.size() - 1);
    const auto scale = static_cast<float>(static_cast<double>(sunShares_.size()) / squaredReach);
    const auto down = static_cast<float>(dy * dy);
    const auto centre = static_cast<float>(moment.sunX - step / 2.0);
    for (int x = first; x < last; ++x) {
        const float dx = static_cast<float>(x * step) - centre;
        const auto entry = static_cast<std::uint32_t>((dx * dx + down) * scale);
        row[x] = blended(row[x], colour, sunShares_[std::min(entry, most)]);
    }
}

void DemoScene::drawSky(const Moment& moment, const Planes& planes) const {
    const Colour top = mixed({64.0, 152.0, 124.0}, {124.0, 160.0, 98.0}, moment.noon);
    const Colour bottom = mixed({158.0, 100.0, 160.0}, {204.0, 136.0, 122.0}, moment.noon);
    const auto light = byte(cloudLuma * (0.6 + 0.4 * moment.noon));
    // A copy: the pixels are bytes, so for the compiler they might be the member.
    const int width = width_;
    const int wide = tile_ + width_;
    for (int row = 0; row < horizon_; ++row) {
        std::uint8_t* const luma = planes.rows[0] + row * planes.strides[0];
        const Colour colour = mixed(top, bottom, static_cast<double>(row) / horizon_);
        std::fill_n(luma, width_, byte(colour.y));
        drawSun(moment, row + 0.5 - moment.sunY, 1, 235, luma);
        const std::uint8_t* const cloud = &clouds_[index(row, wide, moment.drift)];
        for (int x = 0; x < width; ++x) {
            luma[x] = blended(luma[x], light, cloud[x]);
        }
    }
    const int chromaWidth = (width_ + 1) / 2;
    for (int row = 0; row < (horizon_ + 1) / 2; ++row) {
        std::uint8_t* const u = planes.rows[1] + row * planes.strides[1];
        std::uint8_t* const v = planes.rows[2] + row * planes.strides[2];
        const Colour colour = mixed(top, bottom, 2.0 * row / std::max(1, horizon_));
        std::fill_n(u, chromaWidth, byte(colour.u));
        std::fill_n(v, chromaWidth, byte(colour.v));
        drawSun(moment, 2.0 * row + 1.0 - moment.sunY, 2, 96, u);
        drawSun(moment, 2.0 * row + 1.0 - moment.sunY, 2, 142, v);
        const int cloudRow = std::min(2 * row, horizon_ - 1);
        const std::uint8_t* const cloud = &clouds_[index(cloudRow, wide, moment.drift)];
        for (int x = 0; x < chromaWidth; ++x) {
            u[x] = blended(u[x], neutral, cloud[std::ptrdiff_t{2} * x]);
            v[x] = blended(v[x], neutral, cloud[std::ptrdiff_t{2} * x]);
        }
    }
}

void DemoScene::drawHills(const Moment& moment, const Planes& planes) const {
    const int width = width_;
    const int* const tops = hillTops_.data();
    const int highest = std::max(0, *std::min_element(tops, tops + width));
    const auto light = byte(48.0 + 44.0 * moment.noon);
    for (int row = highest; row < horizon_; ++row) {
        std::uint8_t* const luma = planes.rows[0] + row * planes.strides[0];
        for (int x = 0; x < width; ++x) {
            luma[x] = row >= tops[x] ? light : luma[x];
        }
    }
    for (int row = highest / 2; row < (horizon_ + 1) / 2; ++row) {
        std::uint8_t* const u = planes.rows[1] + row * planes.strides[1];
        std::uint8_t* const v = planes.rows[2] + row * planes.strides[2];
        for (int x = 0; x < (width + 1) / 2; ++x) {
            const bool isHill = 2 * row >= tops[std::ptrdiff_t{2} * x];
            u[x] = isHill ? std::uint8_t{134} : u[x];
            v[x] = isHill ? std::uint8_t{118} : v[x];
        }
    }
}

/// The shadows of the clouds wander over it.
void DemoScene::drawGround(const Moment& moment, const Planes& planes) const {
    const int rows = height_ - horizon_;
    const int width = width_;
    const int wide = tile_ + width_;
    const auto light = static_cast<std::uint16_t>(256.0 * (0.5 + 0.5 * moment.noon));
    for (int row = 0; row < rows; ++row) {
        std::uint8_t* const luma = planes.rows[0] + (horizon_ + row) * planes.strides[0];
        const std::uint8_t* const ground = &ground_[index(row, width_, 0)];
        const int cloudRow = std::max(0, (rows - 1 - row) * horizon_ / rows - 1);
        const std::uint8_t* const cloud = &clouds_[index(cloudRow, wide, moment.drift)];
        for (int x = 0; x < width; ++x) {
            const auto lit = static_cast<std::uint16_t>(ground[x] * light >> 8U);
            const auto share = static_cast<std::uint16_t>(cloud[x] * 3U >> 3U);
            luma[x] = blended(static_cast<std::uint8_t>(lit), 16, share);
        }
    }
    for (int row = (horizon_ + 1) / 2; row < (height_ + 1) / 2; ++row) {
        std::fill_n(planes.rows[1] + row * planes.strides[1], (width_ + 1) / 2, byte(104.0));
        std::fill_n(planes.rows[2] + row * planes.strides[2], (width_ + 1) / 2, byte(116.0));
    }
}

/// Darkens a part of a row of the luma.
void DemoScene::shade(const Planes& planes, int row, double left, double right,
                      std::uint16_t share) const {
    if (row < 0 || row >= height_) {
        return;
    }
    std::uint8_t* const luma = planes.rows[0] + row * planes.strides[0];
    const int first = std::clamp(static_cast<int>(left), 0, width_);
    const int last = std::clamp(static_cast<int>(right) + 1, 0, width_);
    for (int x = first; x < last; ++x) {
        luma[x] = blended(luma[x], 16, share);
    }
}

/// A post on the ground. Its shadow points away from the sun and is short at noon.
void DemoScene::drawPost(const Moment& moment, const Planes& planes) const {
    const double postX = 0.62 * width_;
    const int foot = horizon_ + (height_ - horizon_) * 2 / 5;
    const int top = foot - static_cast<int>(0.3 * height_);
    const double half = 0.006 * width_;
    const int shadowRows = static_cast<int>((height_ - foot) * (0.9 - 0.6 * moment.noon));
    const double reach = (postX - moment.sunX) * (1.3 - 0.9 * moment.noon);
    for (int row = 0; row < shadowRows; ++row) {
        const double share = static_cast<double>(row) / shadowRows;
        const double centre = postX + reach * share;
        const double wide = half * (1.0 + share) + std::abs(reach) / shadowRows / 2.0;
        shade(planes, foot + row, centre - wide, centre + wide, 120);
    }
    for (int row = top; row <= foot; ++row) {
        shade(planes, row, postX - half, postX + half, 200);
    }
}

} // namespace vistrane
