#include "frontends/CompileReport.h"

#include <algorithm>

#include "platform/shown_text.h"

namespace vistrane {

void CompileReport::frameIsLoaded(const std::string& path) {
    const std::lock_guard lock(mutex_);
    path_ = path;
    reason_.clear();
}

void CompileReport::frameCouldNotBeRead(const NSError& reason) {
    const std::lock_guard lock(mutex_);
    reason_ = reason.localizedDescription;
}

void CompileReport::frameWasAppended() {
    const std::lock_guard lock(mutex_);
    ++appended_;
}

void CompileReport::frameWasRefused(const NSError& reason) {
    const std::lock_guard lock(mutex_);
    // The reason why the file could not be read says more than the resulting refusal.
    const std::string& why = reason_.empty() ? reason.localizedDescription : reason_;
    const std::string frame = shownText(path_);
    const bool namesFrame = why.find(frame) != std::string::npos;
    leftOut_.push_back(
        {path_, "Not in the movie: " + (namesFrame ? why : frame + ": " + why), why});
}

std::vector<std::string> CompileReport::lines() const {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> lines;
    for (const LeftOut& each : leftOut_) {
        lines.push_back(each.line);
    }
    lines.push_back(std::to_string(appended_) + " of " +
                    std::to_string(appended_ + leftOut_.size()) + " frames went into the movie.");
    return lines;
}

std::vector<std::string> CompileReport::linesWithoutMovie(const NSError& reason) const {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> lines;
    for (const LeftOut& each : leftOut_) {
        if (each.reason != reason.localizedDescription) {
            lines.push_back(each.line);
        }
    }
    lines.push_back("0 of " + std::to_string(appended_ + leftOut_.size()) +
                    " frames went into a movie.");
    return lines;
}

std::optional<std::string> CompileReport::sentence() const {
    constexpr std::size_t mostNames = 5;
    const std::lock_guard lock(mutex_);
    if (leftOut_.empty()) {
        return std::nullopt;
    }
    const std::size_t named = std::min(leftOut_.size(), mostNames);
    std::string text = leftOut_.size() == 1
                           ? "A frame is not in the movie, because it could not be read: "
                           : std::to_string(leftOut_.size()) +
                                 " frames are not in the movie, because they could not be read: ";
    for (std::size_t i = 0; i < named; ++i) {
        const std::string& path = leftOut_[i].path;
        text += (i > 0 ? ", " : "") + shownText(path.substr(path.rfind('/') + 1));
    }
    if (leftOut_.size() > named) {
        text += " and " + std::to_string(leftOut_.size() - named) + " more";
    }
    return text + ".";
}

void CompileReport::clear() {
    const std::lock_guard lock(mutex_);
    appended_ = 0;
    leftOut_.clear();
}

} // namespace vistrane
