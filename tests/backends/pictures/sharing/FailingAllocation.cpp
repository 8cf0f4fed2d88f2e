#include "tests/backends/pictures/sharing/FailingAllocation.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

/// How many allocations succeed before the one that fails; less than 0 when all do.
thread_local int left = -1;

void* allocated(std::size_t length) {
    if (left >= 0 && left-- == 0) {
        return nullptr;
    }
    return std::malloc(length == 0 ? 1 : length);
}

} // namespace

// In place of the library's, in this whole program.

void* operator new(std::size_t length) {
    if (void* const memory = allocated(length)) {
        return memory;
    }
    throw std::bad_alloc();
}

void* operator new(std::size_t length, const std::nothrow_t&) noexcept {
    return allocated(length);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}

namespace vistrane::testing {

FailingAllocation::FailingAllocation(int successes) {
    left = successes;
}

FailingAllocation::~FailingAllocation() {
    left = -1;
}

bool FailingAllocation::hasFailed() const {
    return left < 0;
}

} // namespace vistrane::testing
