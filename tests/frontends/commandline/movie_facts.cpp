#include "tests/frontends/commandline/movie_facts.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <sstream>

#include "tests/frontends/commandline/Program.h"

#include <gtest/gtest.h>

namespace vistrane {

namespace {

/// "key=value" lines, the values of each key in order.
std::map<std::string, std::vector<std::string>> probe(const std::string& path) {
    const std::string entries = "format=nb_streams:format_tags=major_brand:"
                                "stream=codec_name,width,height,time_base:packet=pts,duration";
    const Ended ended = runTool({"ffprobe", "-v", "error", "-show_entries", entries, "-of",
                                 "default=noprint_wrappers=1", "file:" + path});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_EQ(ended.errors, "");
    std::map<std::string, std::vector<std::string>> values;
    for (const std::string& line : ended.lines()) {
        const std::size_t equals = line.find('=');
        if (equals != std::string::npos) {
            values[line.substr(0, equals)].push_back(line.substr(equals + 1));
        }
    }
    return values;
}

std::string only(const std::vector<std::string>& values) {
    EXPECT_EQ(values.size(), 1U);
    return values.empty() ? "0" : values.front();
}

std::vector<long> numbers(const std::vector<std::string>& texts) {
    std::vector<long> result;
    for (const std::string& text : texts) {
        result.push_back(std::stol(text));
    }
    return result;
}

} // namespace

MovieFacts movieFacts(const std::string& path) {
    auto values = probe(path);
    MovieFacts facts;
    facts.brand = only(values["TAG:major_brand"]);
    facts.codec = only(values["codec_name"]);
    facts.streams = std::stoi(only(values["nb_streams"]));
    facts.width = std::stoi(only(values["width"]));
    facts.height = std::stoi(only(values["height"]));
    facts.timeBase = only(values["time_base"]);
    facts.times = numbers(values["pts"]);
    facts.durations = numbers(values["duration"]);
    // Packets come in decoding order.
    std::sort(facts.times.begin(), facts.times.end());
    return facts;
}

std::vector<int> greysOf(const std::string& path) {
    const Ended ended = runTool({"ffmpeg", "-v", "error", "-i", "file:" + path, "-pix_fmt", "rgb24",
                                 "-fps_mode", "passthrough", "-f", "rawvideo", "-"});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    const MovieFacts facts = movieFacts(path);
    const auto frameBytes = std::size_t{3} * static_cast<std::size_t>(facts.width) *
                            static_cast<std::size_t>(facts.height);
    std::vector<int> greys;
    for (std::size_t first = 0; first < ended.output.size(); first += frameBytes) {
        std::uint64_t sum = 0;
        for (const char byte : ended.output.substr(first, frameBytes)) {
            sum += static_cast<std::uint8_t>(byte);
        }
        greys.push_back(static_cast<int>(sum / frameBytes));
    }
    return greys;
}

std::vector<long> frameTimes(long count) {
    std::vector<long> times;
    for (long index = 0; index < count; ++index) {
        times.push_back(index == 0 ? 0 : index + 1);
    }
    return times;
}

} // namespace vistrane
