#pragma once

#include <cstdint>
#include <vector>

#include "platform/foundation/Foundation.h"
#include "platform/foundation/NSURL.h"

namespace vistrane {

/// Encodes a file address as a signature, a version and the bytes of its path. Returns an error for
/// other addresses, and for a path that is not absolute or contains a zero byte.
BookmarkDataResult makeBookmark(const NSURL& url);

/// Decodes such bytes. Returns an error for any others. Does not check that the file exists.
BookmarkURLResult resolveBookmark(const std::vector<std::uint8_t>& data);

} // namespace vistrane
