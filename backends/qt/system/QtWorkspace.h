#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/appkit/NSWorkspace.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

/// Opens addresses with the desktop's default programs (`xdg-open`).
class QtWorkspace final : public NSWorkspace {
public:
    /// Calls back once when the movie at `path` is finished or has failed. Returns false if it is
    /// not being written.
    using WhenFinished = std::function<bool(const std::string& path,
                                            std::function<void(std::optional<NSError>)> callback)>;

    /// Gets one sentence, and the address or path that no program could open.
    using Failed = std::function<void(const std::string& sentence, const std::string& address)>;

    /// Both functions are called on any thread and must outlive the opened programs.
    QtWorkspace(WhenFinished whenFinished, Failed failed);

    bool openURL(const NSURL& url) override;

private:
    void open(const std::string& address) const;

    const WhenFinished whenFinished_;
    const Failed failed_;
};

} // namespace vistrane
