#include "frontends/commandline/progress_texts.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace vistrane {

namespace {

/// "0:05", "1:02:03", rounded up.
std::string clockText(std::chrono::duration<double> time) {
    const auto seconds = std::chrono::ceil<std::chrono::seconds>(time).count();
    std::array<char, 64> text{};
    if (seconds < 3600) {
        std::snprintf(text.data(), text.size(), "%lld:%02lld", static_cast<long long>(seconds / 60),
                      static_cast<long long>(seconds % 60));
    } else {
        std::snprintf(
            text.data(), text.size(), "%lld:%02lld:%02lld", static_cast<long long>(seconds / 3600),
            static_cast<long long>(seconds / 60 % 60), static_cast<long long>(seconds % 60));
    }
    return text.data();
}

std::string rateText(double rate) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), rate < 9.95 ? "%.1f/s" : "%.0f/s", rate);
    return text.data();
}

/// Shorter times say little about the rate.
constexpr std::chrono::milliseconds shortestTime{500};

} // namespace

std::string compileProgress(double done, double total, std::chrono::duration<double> elapsed) {
    std::string text = std::to_string(std::llround(done)) + " of " +
                       std::to_string(std::llround(total)) + " frames";
    if (done > 0.0 && elapsed >= shortestTime) {
        const double rate = done / elapsed.count();
        text += ", " + rateText(rate) + ", " +
                clockText(std::chrono::duration<double>((total - done) / rate)) + " left";
    }
    return text;
}

std::string captureProgress(const CaptureProgress& progress) {
    std::string text = std::to_string(progress.saved);
    if (progress.count) {
        text += " of " + std::to_string(*progress.count);
    }
    text += " saved";
    if (progress.lost > 0) {
        text += ", " + std::to_string(progress.lost) + " lost";
    }
    return text + ", next in " + clockText(progress.next);
}

std::chrono::duration<double> timeToNext(std::chrono::duration<double> elapsed,
                                         std::chrono::seconds interval) {
    const std::chrono::duration<double> whole = interval;
    return whole - std::chrono::duration<double>(std::fmod(elapsed.count(), whole.count()));
}

} // namespace vistrane
