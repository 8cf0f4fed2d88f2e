#pragma once

#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "platform/foundation/Foundation.h"

namespace vistrane::contract {

// What every backend of an interface must do, as test suites with a type parameter. A backend
// instantiates a suite with a class of its own, default constructible for each test, which has the
// members that the suite's header lists:
//
//     INSTANTIATE_TYPED_TEST_SUITE_P(Sim, TimerContract, SimBackend, contract::Names);
//
// A suite never asserts how long anything takes. It lets time pass with the run loop and holds on a
// real clock and on a virtual one.

/// Names the instances of a suite, whose number is in general one.
struct Names {
    template <typename Backend>
    static std::string GetName(int number) {
        return std::to_string(number);
    }
};

/// Runs the main run loop for that many seconds.
inline void runFor(Foundation& foundation, double seconds) {
    foundation.currentRunLoop().runUntilDate(foundation.dateWithTimeIntervalSinceNow(seconds));
}

/// Runs once what is already due.
inline void runOnePass(Foundation& foundation) {
    runFor(foundation, 0.0);
}

/// Runs the main run loop in small steps until `done`. Returns whether that came about within a
/// minute.
inline bool runUntil(Foundation& foundation, const std::function<bool()>& done) {
    for (int step = 0; step < 30000 && !done(); ++step) {
        runFor(foundation, 0.002);
    }
    return done();
}

} // namespace vistrane::contract
