#pragma once

#include <functional>
#include <utility>

#include "platform/appkit/NSWorkspace.h"

namespace vistrane {

/// Passes each address to a function of the front end.
class ConsoleWorkspace final : public NSWorkspace {
public:
    /// `open` is called on the thread that calls `openURL`, and returns its result.
    explicit ConsoleWorkspace(std::function<bool(const NSURL&)> open) : open_(std::move(open)) {}

    bool openURL(const NSURL& url) override { return open_(url); }

private:
    const std::function<bool(const NSURL&)> open_;
};

} // namespace vistrane
