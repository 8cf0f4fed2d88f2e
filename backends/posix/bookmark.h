#pragma once

#include <cstdint>
#include <vector>

#include "platform/foundation/Foundation.h"
#include "platform/foundation/NSURL.h"

namespace vistrane {

/// Encodes a file address as a signature, a version and the bytes of its path. An error for an
/// address that is not a file's, or whose path is not absolute or contains a zero byte.
BookmarkDataResult makeBookmark(const NSURL& url);

/// Decodes such bytes; an error for any others. Does not check that the file exists.
BookmarkURLResult resolveBookmark(const std::vector<std::uint8_t>& data);

} // namespace vistrane
