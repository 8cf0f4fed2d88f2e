#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <unistd.h>

namespace vistrane {

/// How many entries a folder of /proc/self has: open files, threads.
inline std::ptrdiff_t countOf(const char* folder) {
    return std::distance(std::filesystem::directory_iterator(folder),
                         std::filesystem::directory_iterator());
}
constexpr char openFiles[] = "/proc/self/fd";
constexpr char threads[] = "/proc/self/task";

/// The resident memory of this process.
inline double residentBytes() {
    std::ifstream statm("/proc/self/statm");
    double total = 0;
    double resident = 0;
    statm >> total >> resident;
    return resident * static_cast<double>(::sysconf(_SC_PAGESIZE));
}

} // namespace vistrane
