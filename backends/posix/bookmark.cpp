#include "backends/posix/bookmark.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>

#include "platform/shown_text.h"

namespace vistrane {

namespace {

/// The signature and, as its last byte, the version of the format.
constexpr std::array<std::uint8_t, 5> header = {'V', 't', 'b', 'm', 1};

bool isUsable(const std::string& path) {
    return !path.empty() && path.front() == '/' && path.find('\0') == std::string::npos;
}

NSError invalid(std::string text) {
    return {"NSPOSIXErrorDomain", EINVAL, std::move(text)};
}

} // namespace

BookmarkDataResult makeBookmark(const NSURL& url) {
    const std::string path = url.path();
    if (!isUsable(path)) {
        return {{},
                invalid("The address \"" + shownText(url.absoluteString()) +
                        "\" cannot be remembered because it is not an absolute file path; choose a "
                        "folder of the file system")};
    }
    BookmarkDataResult result;
    result.data.resize(header.size() + path.size());
    const auto rest = std::copy(header.begin(), header.end(), result.data.begin());
    std::copy(path.begin(), path.end(), rest);
    return result;
}

BookmarkURLResult resolveBookmark(const std::vector<std::uint8_t>& data) {
    const bool isMarked =
        data.size() > header.size() && std::equal(header.begin(), header.end(), data.begin());
    const std::string path =
        isMarked ? std::string(data.begin() + header.size(), data.end()) : std::string();
    if (!isUsable(path)) {
        return {std::nullopt,
                invalid("The remembered folder cannot be read from the settings because its entry "
                        "is damaged; choose the folder again")};
    }
    return {NSURL::fileURLWithPath(path), std::nullopt};
}

} // namespace vistrane
