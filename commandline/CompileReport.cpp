#include "commandline/CompileReport.h"

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
    // Why the file is no picture says more than that there is no picture to append.
    const std::string& why = reason_.empty() ? reason.localizedDescription : reason_;
    leftOut_.push_back("Not in the movie: " + path_ + ": " + why);
}

std::vector<std::string> CompileReport::lines() const {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> lines = leftOut_;
    lines.push_back(std::to_string(appended_) + " of " +
                    std::to_string(appended_ + leftOut_.size()) + " frames went into the movie.");
    return lines;
}

} // namespace vistrane
