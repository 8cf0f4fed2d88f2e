#include "tests/support/movie_facts.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <sstream>

#include "tests/support/Program.h"

#include <gtest/gtest.h>

namespace vistrane {

namespace {

/// The standard output of a command that succeeds without complaint.
std::string outputOf(const std::vector<std::string>& command) {
    const Ended ended = runTool(command);
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_EQ(ended.errors, "");
    return ended.output;
}

/// The values of ffprobe's "section|key=value|..." lines by "section.key", in the order of lines.
std::map<std::string, std::vector<std::string>> probe(const std::string& path) {
    const std::string entries =
        "format=nb_streams:format_tags=major_brand:frame=pts:packet=pts,dts,duration:"
        "stream=codec_name,width,height,pix_fmt,color_range,color_space,color_transfer,"
        "color_primaries,chroma_location,time_base,start_pts,duration_ts";
    std::istringstream lines(outputOf(
        {"ffprobe", "-v", "error", "-show_entries", entries, "-of", "compact", "file:" + path}));
    std::map<std::string, std::vector<std::string>> values;
    for (std::string line; std::getline(lines, line);) {
        std::istringstream fields(line);
        std::string section;
        std::getline(fields, section, '|');
        for (std::string field; std::getline(fields, field, '|');) {
            const std::size_t equals = field.find('=');
            if (equals != std::string::npos) {
                values[section + "." + field.substr(0, equals)].push_back(field.substr(equals + 1));
            }
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

/// The number after `key`.
int numberAfter(const std::string& key, const std::string& text) {
    const std::size_t found = text.find(key);
    return found == std::string::npos ? 0 : std::stoi(text.substr(found + key.size()));
}

/// The time after `key`, "H:MM:SS.NNNNNNNNN", in seconds.
double timeAfter(const std::string& key, const std::string& text) {
    double hours = 0;
    double minutes = 0;
    double seconds = 0;
    const std::size_t found = text.find(key);
    if (found != std::string::npos) {
        char colon = 0;
        std::istringstream(text.substr(found + key.size())) >> hours >> colon >> minutes >> colon >>
            seconds;
    }
    return (hours * 60 + minutes) * 60 + seconds;
}

} // namespace

MovieFacts movieFacts(const std::string& path) {
    auto values = probe(path);
    MovieFacts facts;
    facts.brand = only(values["format.tag:major_brand"]);
    facts.streams = std::stoi(only(values["format.nb_streams"]));
    facts.codec = only(values["stream.codec_name"]);
    facts.width = std::stoi(only(values["stream.width"]));
    facts.height = std::stoi(only(values["stream.height"]));
    facts.timeBase = only(values["stream.time_base"]);
    facts.start = std::stol(only(values["stream.start_pts"]));
    facts.duration = std::stol(only(values["stream.duration_ts"]));
    for (const char* key : {"pix_fmt", "color_range", "color_space", "color_transfer",
                            "color_primaries", "chroma_location"}) {
        facts.colour +=
            (facts.colour.empty() ? "" : " ") + only(values[std::string("stream.") + key]);
    }
    facts.times = numbers(values["packet.pts"]);
    const std::vector<long> decoding = numbers(values["packet.dts"]);
    for (std::size_t i = 0; i < decoding.size(); ++i) {
        facts.isPresentedBeforeDecoding |= facts.times.at(i) < decoding[i];
    }
    facts.durations = numbers(values["packet.duration"]);
    facts.decodedTimes = numbers(values["frame.pts"]);
    // Packets come in decoding order.
    std::sort(facts.times.begin(), facts.times.end());
    return facts;
}

std::string mediaInfo(const std::string& path, const std::string& what) {
    std::string output = outputOf({"mediainfo", "--Inform=" + what, path});
    output.resize(std::min(output.size(), output.find('\n')));
    return output;
}

DemuxedMovie demuxedByGStreamer(const std::string& path) {
    const std::string output = outputOf({"gst-launch-1.0", "-v", "filesrc", "location=" + path, "!",
                                         "qtdemux", "!", "fakesink", "silent=false"});
    DemuxedMovie movie;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        if (line.find("sink: caps = video/x-h264") != std::string::npos) {
            movie.width = numberAfter("width=(int)", line);
            movie.height = numberAfter("height=(int)", line);
        } else if (line.find("last-message = chain") != std::string::npos) {
            ++movie.frames;
            movie.seconds =
                std::max(movie.seconds, timeAfter(" pts: ", line) + timeAfter("duration: ", line));
        }
    }
    return movie;
}

std::string decodeToRgb(const std::string& path) {
    return outputOf({"ffmpeg", "-v", "error", "-nostdin", "-i", "file:" + path, "-fps_mode",
                     "passthrough", "-vf",
                     "scale=flags=bicubic+accurate_rnd+full_chroma_int+full_chroma_inp:"
                     "in_h_chr_pos=0:in_v_chr_pos=128",
                     "-pix_fmt", "rgb24", "-f", "rawvideo", "-"});
}

std::vector<int> greysOf(const std::string& path) {
    const std::string rgb = decodeToRgb(path);
    const MovieFacts facts = movieFacts(path);
    const auto frameBytes = std::size_t{3} * static_cast<std::size_t>(facts.width) *
                            static_cast<std::size_t>(facts.height);
    std::vector<int> greys;
    for (std::size_t first = 0; first < rgb.size(); first += frameBytes) {
        std::uint64_t sum = 0;
        for (const char byte : rgb.substr(first, frameBytes)) {
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
