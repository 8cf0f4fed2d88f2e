#include "bench/measuring.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace vistrane::bench {

double milliseconds() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::milli>(now).count();
}

double processorMilliseconds() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

double quantile(std::vector<double> values, double part) {
    if (values.empty()) {
        return 0.0;
    }
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(part * static_cast<double>(values.size() - 1) + 0.5)];
}

void printTurns(const Label& label, const Turns& turns) {
    std::vector<double> ratios;
    for (std::size_t turn = 0; turn < turns.ours.size(); ++turn) {
        ratios.push_back(turns.ours[turn] / turns.peer[turn]);
    }
    std::printf("%s\t%s\t%s\t%.3f\t%.3f\t%.3f\t%.3f\n", label.name.c_str(), label.kind.c_str(),
                label.size.c_str(), quantile(turns.ours, 0.5), quantile(turns.peer, 0.5),
                quantile(ratios, 0.5), quantile(ratios, 0.75) - quantile(ratios, 0.25));
    std::fflush(stdout);
}

void require(bool holds, const std::string& what) {
    if (!holds) {
        std::fprintf(stderr, "bench: %s\n", what.c_str());
        std::exit(1);
    }
}

} // namespace vistrane::bench
