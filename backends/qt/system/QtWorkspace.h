#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/appkit/NSWorkspace.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

/// Opens addresses with the desktop's own choice of programs (`xdg-open`). Tells the log of a file
/// that nothing opens, and nobody of any other address.
class QtWorkspace final : public NSWorkspace {
public:
    /// Calls back once when the movie at `path` is whole or has failed; false when nobody writes
    /// it.
    using WhenFinished = std::function<bool(const std::string& path,
                                            std::function<void(std::optional<NSError>)> callback)>;

    /// `log` takes one line. Both are called on any thread and outlive all that was opened.
    QtWorkspace(WhenFinished whenFinished, std::function<void(const std::string&)> log);

    bool openURL(const NSURL& url) override;

private:
    void openFile(const std::string& path) const;

    const WhenFinished whenFinished_;
    const std::function<void(const std::string&)> log_;
};

} // namespace vistrane
