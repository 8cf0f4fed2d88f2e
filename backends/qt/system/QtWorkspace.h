#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/appkit/NSWorkspace.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

/// Opens addresses with the desktop's default programs (`xdg-open`). Logs if a file cannot be
/// opened; failures of other addresses are not reported.
class QtWorkspace final : public NSWorkspace {
public:
    /// Calls back once when the movie at `path` is finished or has failed. Returns false if it is
    /// not being written.
    using WhenFinished = std::function<bool(const std::string& path,
                                            std::function<void(std::optional<NSError>)> callback)>;

    /// `log` gets one line. Both functions are called on any thread and must outlive the opened
    /// programs.
    QtWorkspace(WhenFinished whenFinished, std::function<void(const std::string&)> log);

    bool openURL(const NSURL& url) override;

private:
    void openFile(const std::string& path) const;

    const WhenFinished whenFinished_;
    const std::function<void(const std::string&)> log_;
};

} // namespace vistrane
