#include "frontends/window/CaptureReport.h"

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <system_error>

namespace vistrane {

namespace {

/// Such as "1 h 30 min", with the `most` largest units.
std::string durationText(std::int64_t seconds, int most) {
    const std::pair<std::int64_t, const char*> units[] = {
        {seconds / 3600, " h"}, {seconds / 60 % 60, " min"}, {seconds % 60, " s"}};
    std::string text;
    for (const auto& [count, unit] : units) {
        most -= text.empty() && count == 0 ? 0 : 1;
        if (count > 0 && most >= 0) {
            text += (text.empty() ? "" : " ") + std::to_string(count) + unit;
        }
    }
    return text.empty() ? "0 s" : text;
}

/// In a few words, or nothing.
std::string shortReason(const NSError& error) {
    if (error.domain != "NSPOSIXErrorDomain") {
        return "";
    }
    switch (error.code) {
    case ENOSPC:
        return "disk full";
    case EDQUOT:
        return "disk quota used up";
    case ENOENT:
    case ENOTDIR:
        return "folder missing";
    case EACCES:
    case EPERM:
        return "no permission to write";
    case EROFS:
        return "disk is read-only";
    default:
        return std::generic_category().message(static_cast<int>(error.code));
    }
}

} // namespace

void CaptureReport::begin() {
    saved_ = 0;
    lost_ = 0;
    reason_.clear();
}

void CaptureReport::hasOutcome() {
    if (!handled_.empty()) {
        handled_.back() = true;
    }
}

void CaptureReport::fileWasWritten() {
    hasOutcome();
    ++saved_;
}

void CaptureReport::fileCouldNotBeWritten(const NSError& reason) {
    hasOutcome();
    ++lost_;
    reason_ = shortReason(reason);
}

void CaptureReport::stillWasHandled() {
    const bool hasFile = handled_.back();
    handled_.pop_back();
    if (!hasFile) {
        // There was no picture or no folder, which is said elsewhere.
        ++lost_;
        reason_.clear();
    }
}

CaptureReport::Text CaptureReport::text(const Schedule& schedule) const {
    constexpr int all = 3;
    const std::string start =
        "Capturing every " + durationText(std::llround(schedule.interval), all);
    const std::string next =
        schedule.isHeldBack
            ? ", held back by the open dialog"
            : ", next in " + durationText(std::llround(std::ceil(schedule.untilNext)), 2);
    const std::string saved = ", " + std::to_string(saved_) + " saved";
    Text text;
    text.status = start + next + saved;
    text.calmStatus = start + (schedule.isHeldBack ? next : "") + saved;
    if (lost_ > 0) {
        text.warning =
            std::to_string(lost_) + " not saved" + (reason_.empty() ? "" : " (" + reason_ + ")");
    }
    return text;
}

} // namespace vistrane
