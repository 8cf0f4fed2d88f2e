#include "tests/support/PanelTest.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;

TEST_F(PanelTest, RatingOpensTheOwnStorePage) {
    sim.nib().send("rateMe:");
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre(std::string("sharedWorkspace openURL: ") + ownStorePage));
}

TEST_F(PanelTest, MoreOpensTheDevelopersApplications) {
    sim.nib().send("moreBYmantisqrx:");
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre(std::string("sharedWorkspace openURL: ") + developerSearchLink));
}

TEST_F(PanelTest, ALinkThatNothingCanOpenIsDroppedWithoutAWord) {
    sim.workspace().opens = false;
    sim.nib().send("rateMe:");
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre(std::string("sharedWorkspace openURL: ") + ownStorePage));
    EXPECT_THAT(sim.alerts().shown(), ::testing::IsEmpty());
}

} // namespace
} // namespace vistrane
