#include "tests/support/Soak.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <numeric>
#include <thread>
#include <utility>

#include <unistd.h>

#include <gtest/gtest.h>

namespace vistrane {

namespace {

/// The part of the full run that is requested; 0 for the test run.
double requestedPart() {
    const char* value = std::getenv("VISTRANE_SOAK");
    return value == nullptr ? 0 : std::string(value) == "full" ? 1 : std::strtod(value, nullptr);
}

} // namespace

Soak::Soak(std::string what, Rounds rounds)
    : what_(std::move(what)),
      count_(std::max(rounds.few, static_cast<int>(requestedPart() * rounds.many))) {}

bool Soak::isLong() {
    return requestedPart() > 0;
}

bool Soak::next() {
    showProgress();
    if (round_ == count_ || testing::Test::HasFailure()) {
        return false;
    }
    ++round_;
    return true;
}

int Soak::randomUpTo(int highest) {
    return std::uniform_int_distribution<int>(0, highest)(random_);
}

void Soak::sleepUpTo(std::chrono::milliseconds longest) {
    const auto microseconds = std::chrono::microseconds(longest).count();
    std::this_thread::sleep_for(
        std::chrono::microseconds(randomUpTo(static_cast<int>(microseconds))));
}

void Soak::report(const std::string& reached, bool isGoal) const {
    const std::string line = what_ + '\t' + reached + '\t' + (isGoal ? "yes" : "no") + '\n';
    std::cout << line;
    if (const char* path = std::getenv("VISTRANE_SOAK_RESULTS")) {
        std::ofstream(path, std::ios::app) << line;
    }
}

/// One line, which a terminal overwrites. Elsewhere, one line for each twentieth.
void Soak::showProgress() const {
    const bool isTerminal = ::isatty(STDERR_FILENO) == 1;
    if (!isLong() || (!isTerminal && round_ % std::max(1, count_ / 20) != 0)) {
        return;
    }
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    std::fprintf(stderr, "%s%s: %d of %d", isTerminal ? "\r\033[K" : "", what_.c_str(), round_,
                 count_);
    if (round_ > 0) {
        const double left = seconds / round_ * (count_ - round_);
        std::fprintf(stderr, ", %.0f min %02.0f s left", std::floor(left / 60),
                     std::fmod(left, 60));
    }
    std::fprintf(stderr, "%s", isTerminal && round_ < count_ ? "" : "\n");
}

double Times::percentile(double share) const {
    if (all_.empty()) {
        return 0;
    }
    std::vector<double> sorted = all_;
    std::sort(sorted.begin(), sorted.end());
    const double rank = std::ceil(share * static_cast<double>(sorted.size()));
    return sorted[static_cast<std::size_t>(std::max(1.0, rank)) - 1];
}

double Times::shareWithin(double limit) const {
    const auto within =
        std::count_if(all_.begin(), all_.end(), [limit](double time) { return time <= limit; });
    return static_cast<double>(within) / static_cast<double>(std::max<std::size_t>(1, all_.size()));
}

double slope(const std::vector<double>& x, const std::vector<double>& y) {
    const auto count = static_cast<double>(x.size());
    const double meanX = std::accumulate(x.begin(), x.end(), 0.0) / count;
    const double meanY = std::accumulate(y.begin(), y.end(), 0.0) / count;
    double products = 0;
    double squares = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        products += (x[i] - meanX) * (y[i] - meanY);
        squares += (x[i] - meanX) * (x[i] - meanX);
    }
    return products / squares;
}

} // namespace vistrane
