#pragma once

#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

#include "platform/foundation/NSError.h"

namespace vistrane {

/// Which frames were added to a movie. The compile thread loads one frame, then appends it, and
/// reports both here. Any thread may read.
class CompileReport {
public:
    /// The next append is for this frame.
    void frameIsLoaded(const std::string& path);
    void frameCouldNotBeRead(const NSError& reason);

    void frameWasAppended();
    void frameWasRefused(const NSError& reason);

    struct LeftOut {
        std::string path;
        std::string reason;
    };
    std::vector<LeftOut> leftOut() const;
    /// A line for each frame that was left out.
    std::vector<std::string> lines() const;
    /// A line with the counts.
    std::string summary() const;
    /// The lines for a movie that failed, whose reason says whether a file is left. Omits frames
    /// that were refused for the same reason, because they are not the cause.
    std::vector<std::string> linesWithoutMovie(const NSError& reason) const;

private:
    mutable std::mutex mutex_;
    std::string path_;
    std::string reason_;
    std::size_t appended_ = 0;
    std::vector<LeftOut> leftOut_;
};

} // namespace vistrane
