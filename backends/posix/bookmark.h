#pragma once

#include <cstdint>
#include <vector>

#include "platform/foundation/Foundation.h"
#include "platform/foundation/NSURL.h"

namespace vistrane {

/// Bytes from which a file address can be found again: a mark, a version and the path's bytes.
/// An error for an address that is no file's, or whose path is not absolute or holds a zero byte.
BookmarkDataResult makeBookmark(const NSURL& url);

/// The address that such bytes stand for, or an error for any other bytes. Never looks whether
/// anything is there.
BookmarkURLResult resolveBookmark(const std::vector<std::uint8_t>& data);

} // namespace vistrane
