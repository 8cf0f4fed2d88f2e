#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "backends/icu/IcuLocale.h"
#include "core/folder/frame_list.h"

// Takes any three names, separated by NUL bytes. Comparing them is a total order in which only
// identical names are equal, so that "before" is a strict weak order. Sorting, which compares
// differently, gives the same order, whatever the order was before.

namespace {

using namespace vistrane;

std::string nextName(std::string_view& rest) {
    const std::size_t end = rest.find('\0');
    std::string name(rest.substr(0, end));
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    return name;
}

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const IcuLocale locale("en_US");
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    const std::string a = nextName(rest);
    const std::string b = nextName(rest);
    const std::string c = nextName(rest);

    const int ab = frameNameCompare(a, b, locale);
    const int bc = frameNameCompare(b, c, locale);
    const int ac = frameNameCompare(a, c, locale);
    require(ab == -frameNameCompare(b, a, locale));
    require((ab == NSOrderedSame) == (a == b));
    require(frameNameCompare(a, a, locale) == NSOrderedSame);
    if (ab <= 0 && bc <= 0) {
        require(ac == (ab < 0 || bc < 0 ? NSOrderedAscending : NSOrderedSame));
    }
    if (ab >= 0 && bc >= 0) {
        require(ac == (ab > 0 || bc > 0 ? NSOrderedDescending : NSOrderedSame));
    }

    std::vector<std::string> sorted = {"/f/" + a, "/f/" + b, "/f/" + c};
    std::vector<std::string> others = {sorted[2], sorted[0], sorted[1]};
    sortFrames(sorted, locale);
    sortFrames(others, locale);
    require(sorted == others);
    for (std::size_t at = 1; at < sorted.size(); ++at) {
        require(frameNameCompare(sorted[at - 1], sorted[at], locale) <= 0);
    }
    return 0;
}
