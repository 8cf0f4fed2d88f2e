#include "backends/sim/Sim.h"

#include <thread>

namespace vistrane {

Sim::Sim()
    : loop_(log_), files_(log_), drawing_(log_), pictures_(log_, files_, drawing_), nib_(log_),
      movies_(log_, files_, drawing_), cameras_(log_, pictures_), threads_(log_),
      alerts_(log_, loop_, threads_), panels_(log_, loop_),
      foundation_(log_, loop_, threads_, files_),
      appKit_(log_, alerts_, panels_, pictures_, drawing_), avFoundation_(cameras_, movies_) {}

Sim::~Sim() {
    threads_.end();
}

Platform Sim::platform() {
    return {foundation_, appKit_, avFoundation_, drawing_, drawing_, loop_};
}

std::vector<std::string> Sim::logLines() const {
    const std::string start = "NSLog: ";
    std::vector<std::string> lines;
    for (const std::string& call : log_.calls()) {
        if (call.compare(0, start.size(), start) == 0) {
            lines.push_back(call.substr(start.size()));
        }
    }
    return lines;
}

void Sim::advanceUntilThreadsEnd(double step) {
    // A thread posts before it ends: once all have ended, one more turn takes the rest.
    while (!threads_.allFinished()) {
        loop_.advance(step);
        std::this_thread::yield();
    }
    loop_.advance(0.0);
}

} // namespace vistrane
