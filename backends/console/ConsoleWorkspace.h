#pragma once

#include <functional>
#include <utility>

#include "platform/appkit/NSWorkspace.h"

namespace vistrane {

/// Hands addresses to the front end.
class ConsoleWorkspace final : public NSWorkspace {
public:
    /// `open` is called on the thread that opens, any thread; its result is that of `openURL`.
    explicit ConsoleWorkspace(std::function<bool(const NSURL&)> open) : open_(std::move(open)) {}

    bool openURL(const NSURL& url) override { return open_ && open_(url); }

private:
    const std::function<bool(const NSURL&)> open_;
};

} // namespace vistrane
