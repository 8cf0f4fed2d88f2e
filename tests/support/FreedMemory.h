#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

namespace vistrane {

/// Memory that was used and freed. The allocator keeps it, because a used block follows. Not with
/// sanitizers, which have allocators of their own.
class FreedMemory {
public:
    FreedMemory() {
        for (auto*& block : blocks_) {
            block = static_cast<unsigned char*>(std::malloc(blockSize));
            std::memset(block, 1, blockSize);
        }
        following_ = std::malloc(blockSize);
        for (auto* block : blocks_) {
            std::free(block);
        }
    }
    ~FreedMemory() { std::free(following_); }
    FreedMemory(const FreedMemory&) = delete;
    FreedMemory& operator=(const FreedMemory&) = delete;

    /// How much of it is resident: 0 to 1.
    double residentShare() const {
        const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
        std::vector<unsigned char> states(blockSize / page);
        std::size_t pages = 0;
        std::size_t resident = 0;
        for (const auto* block : blocks_) {
            const auto begin = reinterpret_cast<std::uintptr_t>(block);
            const std::uintptr_t first = (begin + page - 1) / page * page;
            const std::uintptr_t count = (begin + blockSize - first) / page;
            if (::mincore(reinterpret_cast<void*>(first), count * page, states.data()) != 0) {
                continue; // unmapped
            }
            pages += count;
            for (std::size_t i = 0; i < count; ++i) {
                resident += states[i] & 1U;
            }
        }
        return pages == 0 ? 0 : static_cast<double>(resident) / static_cast<double>(pages);
    }

private:
    /// Smaller than the blocks that always come from the system.
    static constexpr std::size_t blockSize = 100'000;
    std::vector<unsigned char*> blocks_ = std::vector<unsigned char*>(500);
    void* following_ = nullptr;
};

} // namespace vistrane
