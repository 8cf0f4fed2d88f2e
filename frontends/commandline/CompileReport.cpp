#include "frontends/commandline/CompileReport.h"

#include "platform/shown_text.h"

namespace vistrane {

namespace {

std::string lineFor(const CompileReport::LeftOut& frame) {
    const std::string path = shownText(frame.path);
    const bool namesFrame = frame.reason.find(path) != std::string::npos;
    return "Not in the movie: " + (namesFrame ? frame.reason : path + ": " + frame.reason);
}

} // namespace

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
    leftOut_.push_back({path_, why});
}

std::vector<CompileReport::LeftOut> CompileReport::leftOut() const {
    const std::lock_guard lock(mutex_);
    return leftOut_;
}

std::vector<std::string> CompileReport::lines() const {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> lines;
    for (const LeftOut& each : leftOut_) {
        lines.push_back(lineFor(each));
    }
    return lines;
}

std::string CompileReport::summary() const {
    const std::lock_guard lock(mutex_);
    return std::to_string(appended_) + " of " + std::to_string(appended_ + leftOut_.size()) +
           " frames went into the movie.";
}

std::vector<std::string> CompileReport::linesWithoutMovie(const NSError& reason) const {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> lines;
    for (const LeftOut& each : leftOut_) {
        if (each.reason != reason.localizedDescription) {
            lines.push_back(lineFor(each));
        }
    }
    return lines;
}

} // namespace vistrane
