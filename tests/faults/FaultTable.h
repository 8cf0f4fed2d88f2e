#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/faults/FaultCells.h"

namespace vistrane {

/// What a fault did.
struct FaultOutcome {
    /// What the user sees, one paragraph per line. Without the parts that differ between runs.
    std::string seen;
    int status = 0;
    /// What is new on the disk.
    std::string disk;

    bool operator==(const FaultOutcome&) const = default;
};

/// The fault matrix as tables in Markdown: one for each scene. Faults of a call that have the same
/// outcome share a row.
std::string faultTables(const std::map<std::string, FaultOutcome>& outcomesByCell);

/// The outcome that the tables in a document give for a cell.
std::optional<FaultOutcome> outcomeInTables(const std::string& document, const FaultCell& cell);

/// The document with the text between the markers replaced. Nothing without the markers.
std::optional<std::string> withTables(const std::string& document, const std::string& tables);

} // namespace vistrane
