#include "backends/console/ConsoleAlert.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace vistrane {
namespace {

using ::testing::ElementsAre;

class ConsoleAlertTest : public ::testing::Test {
protected:
    QtRunLoop loop_;
    std::vector<std::string> shown_;
    std::shared_ptr<const ConsoleAlertRules> rules_ = std::make_shared<const ConsoleAlertRules>(
        ConsoleAlertRules{loop_, [this](const std::string& text) { shown_.push_back(text); },
                          [this] {
                              EXPECT_EQ(shown_.size(), 1U) << "the text comes before the answer";
                              return NSAlertFirstButtonReturn + 1;
                          }});
};

TEST_F(ConsoleAlertTest, ShowsItsTextsThenReturnsTheAnswer) {
    ConsoleAlert alert(rules_);
    alert.setMessageText("message");
    alert.setInformativeText("information\n");
    EXPECT_EQ(alert.runModal(), 1001);
    EXPECT_THAT(shown_, ElementsAre("message\ninformation"));
}

TEST_F(ConsoleAlertTest, AnErrorsAlertShowsDescriptionDomainAndCode) {
    ConsoleAlert alert(rules_, {"SomeDomain", -42, "The file cannot be written"});
    alert.runModal();
    EXPECT_THAT(shown_, ElementsAre("The file cannot be written\nSomeDomain error -42"));
}

} // namespace
} // namespace vistrane
