#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "backends/posix/bookmark.h"

// Reads any bytes as a bookmark. They are refused, or resolve to a URL whose bookmark resolves to
// it again.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vistrane;
    const auto found = resolveBookmark(std::vector<std::uint8_t>(data, data + size));
    if (!found.url) {
        return 0;
    }
    const auto again = makeBookmark(*found.url);
    if (again.error || resolveBookmark(again.data).url != found.url) {
        std::abort();
    }
    return 0;
}
