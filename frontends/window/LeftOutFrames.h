#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace vistrane {

/// Which frames are missing from the movies that are being made. A compile thread loads a frame,
/// then appends it, and reports both here. Any thread.
class LeftOutFrames {
public:
    /// The next append of this thread is for this frame.
    void frameIsLoaded(const std::string& path);
    void frameWasRefused(const std::string& moviePath);

    /// One sentence that names the first five frames that are missing from the movie, or nothing if
    /// none is. Forgets them.
    std::optional<std::string> takeSentence(const std::string& moviePath);

private:
    std::mutex mutex_;
    /// The frames' names by the movie's path.
    std::map<std::string, std::vector<std::string>> names_;
};

} // namespace vistrane
