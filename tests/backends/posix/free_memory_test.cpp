#include <gtest/gtest.h>

#include "backends/posix/free_memory.h"
#include "tests/support/FreedMemory.h"

namespace vistrane {
namespace {

TEST(FreeMemory, GoesBackToTheSystem) {
    const FreedMemory freed;
    ASSERT_GT(freed.residentShare(), 0.9);
    returnFreeMemory();
    EXPECT_LT(freed.residentShare(), 0.1);
}

} // namespace
} // namespace vistrane
