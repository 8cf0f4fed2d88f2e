#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace vistrane {

/// What the program does while calls fail.
enum class FaultScene {
    savingFrames,
    readingFrames,
    writingMovie,
    listing,
    readingSettings,
    savingSettings
};

/// The scenes in the order of the table.
std::vector<FaultScene> faultScenes();

/// The scene as a heading, for instance "Saving frames".
std::string headingOf(FaultScene scene);

/// One cell of the fault matrix.
struct FaultCell {
    FaultScene scene;
    /// A function of the C library, or a group of them as in fault_shim.cpp.
    std::string call;
    /// How the call fails, for instance "ENOSPC" or "EIO, 2nd call".
    std::string fault;
    /// The value of VISTRANE_FAULT.
    std::string setting;
    /// Whether the cell runs in every run of the tests.
    bool isCommon = false;

    /// For the name of a test.
    std::string name() const;
};

/// For reports of failed tests.
void PrintTo(const FaultCell& cell, std::ostream* out);

std::vector<FaultCell> faultCells();

/// Faults that do not occur, and why.
struct ImpossibleFaults {
    std::string call;
    std::string faults;
    std::string reason;
};

std::vector<ImpossibleFaults> impossibleFaults();

} // namespace vistrane
