#pragma once

#include <string>
#include <vector>

namespace vistrane {

/// What ffprobe and ffmpeg find in a movie.
struct MovieFacts {
    std::string brand;
    std::string codec;
    int streams = 0;
    int width = 0;
    int height = 0;
    /// "1/25" for instance.
    std::string timeBase;
    /// Of each frame in showing order, in units of the time base.
    std::vector<long> times;
    std::vector<long> durations;
};

MovieFacts movieFacts(const std::string& path);

/// The mean grey of each frame, as a player shows it.
std::vector<int> greysOf(const std::string& path);

/// 0, 2, 3 and so on, that many: the first frame is shown for two periods.
std::vector<long> frameTimes(long count);

} // namespace vistrane
