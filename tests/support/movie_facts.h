#pragma once

#include <string>
#include <vector>

namespace vistrane {

/// What ffprobe finds in a movie with one track.
struct MovieFacts {
    std::string brand;
    std::string codec;
    int streams = 0;
    int width = 0;
    int height = 0;
    /// For instance "1/25". The following times are in units of it.
    std::string timeBase;
    long start = 0;
    long duration = 0;
    /// Of each frame, in presentation order.
    std::vector<long> times;
    std::vector<long> durations;
    /// Whether a packet's presentation time lies before its decoding time.
    bool isPresentedBeforeDecoding = false;
    /// The frames' times in the order in which the decoder delivers them.
    std::vector<long> decodedTimes;
    /// Pixel format, range, matrix, transfer function, primaries and chroma location.
    std::string colour;
};

MovieFacts movieFacts(const std::string& path);

/// What mediainfo prints for one of its templates, for instance "Video;%Width%", without the line's
/// end.
std::string mediaInfo(const std::string& path, const std::string& what);

/// What GStreamer's demuxer delivers.
struct DemuxedMovie {
    int width = 0;
    int height = 0;
    int frames = 0;
    /// The end of the last frame in presentation order.
    double seconds = 0;
};

DemuxedMovie demuxedByGStreamer(const std::string& path);

/// All frames as red, green and blue bytes, converted as the movie's tags say. Chroma is taken from
/// the even columns, where H.264 has it: the converter does not look at that tag.
std::string decodeToRgb(const std::string& path);

/// The mean of each decoded frame's bytes.
std::vector<int> greysOf(const std::string& path);

/// The times of that many frames: 0, 2, 3 and so on. The first frame lasts two periods.
std::vector<long> frameTimes(long count);

} // namespace vistrane
