#include "tests/backends/movies/MovieTest.h"
#include "tests/support/FreedMemory.h"

namespace vistrane {
namespace {

using ReturnedMemory = MovieTest;

TEST_F(ReturnedMemory, AMovieThatHasEndedReturnsWhatMallocKeeps) {
    const FreedMemory freed;
    ASSERT_GT(freed.residentShare(), 0.9);
    make(2);
    EXPECT_LT(freed.residentShare(), 0.5);
}

} // namespace
} // namespace vistrane
