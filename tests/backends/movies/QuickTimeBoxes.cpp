#include "tests/backends/movies/QuickTimeBoxes.h"

#include <fstream>
#include <iterator>

namespace vistrane {

namespace {

class Reader {
public:
    Reader(const std::string& bytes, QuickTimeBoxes& boxes) : bytes_(bytes), boxes_(boxes) {}

    bool readAll() { return readBoxes(0, bytes_.size()) && hasMedia_ && hasMovie_; }

private:
    std::uint64_t number(std::size_t at, std::size_t width) const {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < width && at + i < bytes_.size(); ++i) {
            value = value << 8 | static_cast<unsigned char>(bytes_[at + i]);
        }
        return value;
    }
    std::uint32_t u32(std::size_t at) const { return static_cast<std::uint32_t>(number(at, 4)); }
    std::int32_t i32(std::size_t at) const { return static_cast<std::int32_t>(u32(at)); }

    bool readBoxes(std::size_t at, std::size_t end) {
        while (at < end) {
            std::uint64_t size = number(at, 4);
            std::size_t header = 8;
            if (size == 1) {
                size = number(at + 8, 8);
                header = 16;
            }
            if (size < header || size > end - at) {
                return false;
            }
            if (!readBox(bytes_.substr(at + 4, 4), at + header, at + size)) {
                return false;
            }
            at += size;
        }
        return at == end;
    }

    bool readBox(const std::string& type, std::size_t at, std::size_t end) {
        if (type == "moov" || type == "trak" || type == "edts" || type == "mdia" ||
            type == "minf" || type == "stbl") {
            hasMovie_ = true;
            return readBoxes(at, end);
        }
        if (type == "mdat") {
            hasMedia_ = true;
        } else if (type == "mvhd") {
            boxes_.movieTimescale = u32(at + 12);
            boxes_.movieDuration = u32(at + 16);
        } else if (type == "tkhd") {
            boxes_.trackDuration = u32(at + 20);
            boxes_.trackWidth = u32(at + 76) / 65536.0;
            boxes_.trackHeight = u32(at + 80) / 65536.0;
        } else if (type == "mdhd") {
            boxes_.mediaTimescale = u32(at + 12);
            boxes_.mediaDuration = u32(at + 16);
        } else if (type == "elst") {
            for (std::size_t i = 0; i < u32(at + 4); ++i) {
                boxes_.edits.push_back({i32(at + 8 + 12 * i), i32(at + 12 + 12 * i)});
            }
        } else if (type == "stsd") {
            boxes_.codec = bytes_.substr(at + 12, 4);
            boxes_.sampleWidth = static_cast<std::uint16_t>(number(at + 40, 2));
            boxes_.sampleHeight = static_cast<std::uint16_t>(number(at + 42, 2));
        } else if (type == "stts") {
            boxes_.sampleDurations = runs(at);
        } else if (type == "ctts") {
            boxes_.compositionOffsets = runs(at);
        } else if (type == "stsz") {
            for (std::size_t i = 0; i < u32(at + 8); ++i) {
                boxes_.sampleSizes.push_back(u32(at + 12 + 4 * i));
            }
        }
        return true;
    }

    std::vector<TimeRun> runs(std::size_t at) const {
        std::vector<TimeRun> table;
        for (std::size_t i = 0; i < u32(at + 4); ++i) {
            table.push_back({u32(at + 8 + 8 * i), i32(at + 12 + 8 * i)});
        }
        return table;
    }

    const std::string& bytes_;
    QuickTimeBoxes& boxes_;
    bool hasMedia_ = false;
    bool hasMovie_ = false;
};

} // namespace

std::int64_t QuickTimeBoxes::sumOfSampleDurations() const {
    std::int64_t sum = 0;
    for (const TimeRun& run : sampleDurations) {
        sum += std::int64_t{run.count} * run.value;
    }
    return sum;
}

std::optional<QuickTimeBoxes> readBoxes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(file)),
                            std::istreambuf_iterator<char>());
    QuickTimeBoxes boxes;
    if (!Reader(bytes, boxes).readAll()) {
        return std::nullopt;
    }
    return boxes;
}

} // namespace vistrane
