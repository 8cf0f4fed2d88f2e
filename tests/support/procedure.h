#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "backends/sim/Sim.h"

namespace vistrane {

/// Takes the calls so far, without the setting up of alerts, whose order does not matter (what an
/// alert said is in `sim.alerts().shown()`), and without those that begin with one of `others`.
inline std::vector<std::string> takeProcedure(Sim& sim,
                                              const std::vector<std::string>& others = {}) {
    std::vector<std::string> procedure;
    for (std::string& call : sim.takeCalls()) {
        const bool isSetUp = call.starts_with("alert") && !call.starts_with("alertWithError:") &&
                             !call.ends_with(" runModal");
        const bool isOther = std::any_of(others.begin(), others.end(), [&](const auto& start) {
            return call.starts_with(start);
        });
        if (!isSetUp && !isOther) {
            procedure.push_back(std::move(call));
        }
    }
    return procedure;
}

} // namespace vistrane
