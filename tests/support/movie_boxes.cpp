#include "tests/support/movie_boxes.h"

#include <fstream>
#include <iterator>
#include <set>

namespace vistrane {

namespace {

std::uint64_t numberAt(const std::string& bytes, std::size_t at, std::size_t width) {
    std::uint64_t value = 0;
    for (const char byte : bytes.substr(at, width)) {
        value = value << 8 | static_cast<unsigned char>(byte);
    }
    return value;
}

/// Whether boxes fill the bytes from `at` to `end`.
bool readBoxes(const std::string& bytes, std::size_t at, std::size_t end, MovieBoxes& boxes) {
    static const std::set<std::string> containers{"moov", "trak", "edts", "mdia", "minf", "stbl"};
    while (end - at >= 8) {
        std::uint64_t size = numberAt(bytes, at, 4);
        const std::size_t header = size == 1 ? 16 : 8;
        if (size == 1) {
            size = numberAt(bytes, at + 8, 8);
        }
        if (size < header || size > end - at) {
            return false;
        }
        const std::string type = bytes.substr(at + 4, 4);
        const bool isContainer = containers.contains(type);
        if (isContainer && !readBoxes(bytes, at + header, at + size, boxes)) {
            return false;
        }
        std::vector<std::int64_t> numbers;
        for (std::size_t i = header; !isContainer && type != "mdat" && i + 4 <= size; i += 4) {
            numbers.push_back(static_cast<std::int32_t>(numberAt(bytes, at + i, 4)));
        }
        boxes.emplace(type, numbers);
        at += size;
    }
    return at == end;
}

} // namespace

MovieBoxes boxesIn(const std::string& bytes) {
    MovieBoxes boxes;
    return readBoxes(bytes, 0, bytes.size(), boxes) ? boxes : MovieBoxes();
}

MovieBoxes boxesOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(file)),
                            std::istreambuf_iterator<char>());
    const MovieBoxes boxes = boxesIn(bytes);
    return boxes.contains("mdat") && boxes.contains("moov") ? boxes : MovieBoxes();
}

} // namespace vistrane
