#pragma once

#include <string>
#include <utility>
#include <vector>

#include "backends/sim/Sim.h"

namespace vistrane {

/// The calls so far without the setting up of alerts, which may come in any order: what an alert
/// said in the end is in `sim.alerts().shown()`.
inline std::vector<std::string> takeProcedure(Sim& sim) {
    std::vector<std::string> procedure;
    for (std::string& call : sim.takeCalls()) {
        const bool isAlerts = call.compare(0, 5, "alert") == 0;
        if (!isAlerts || call.find("runModal") != std::string::npos ||
            call.compare(0, 15, "alertWithError:") == 0) {
            procedure.push_back(std::move(call));
        }
    }
    return procedure;
}

} // namespace vistrane
