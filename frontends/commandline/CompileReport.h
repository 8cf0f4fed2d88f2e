#pragma once

#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

#include "platform/foundation/NSError.h"

namespace vistrane {

/// Which frames went into a movie. Written by the compile thread, which loads one frame and then
/// appends it; read by any thread.
class CompileReport {
public:
    /// The next append belongs to this frame.
    void frameIsLoaded(const std::string& path);
    void frameCouldNotBeRead(const NSError& reason);

    void frameWasAppended();
    void frameWasRefused(const NSError& reason);

    /// One line for each frame that was left out, then one that counts.
    std::vector<std::string> lines() const;
    /// The same without a movie: the frames that were refused for the reason why there is none are
    /// not to blame and not named.
    std::vector<std::string> linesWithoutMovie(const NSError& reason) const;

private:
    struct LeftOut {
        std::string line;
        std::string reason;
    };

    mutable std::mutex mutex_;
    std::string path_;
    std::string reason_;
    std::size_t appended_ = 0;
    std::vector<LeftOut> leftOut_;
};

} // namespace vistrane
