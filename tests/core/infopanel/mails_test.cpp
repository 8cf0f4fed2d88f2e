#include "tests/support/PanelTest.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

const std::string supportMail =
    "mailto:support%40vistrane.example.com?SUBJECT=Vistrane%202.1.5%20-%20support%20request&BODY="
    "Hi%20mantisQRX,%0A%0A%0A%0A%0Amy%20OS:Version%2013.1%20(Build%2022C65)"
    "%0Amy%20issue:%0A%0A%0A%0A%0Amyname:%0Amycountry:";
const std::string requestMail =
    "mailto:support%40vistrane.example.com?SUBJECT=Vistrane%202.1.5%20-%20frature%20request&BODY="
    "Hi%20mantisQRX,%0A%0A%0A%0A%0Amy%20OS:Version%2013.1%20(Build%2022C65)"
    "%0Amy%20request:%0A%0A%0A%0A%0Amyname:%0Amycountry:";

std::string opening(const std::string& address) {
    return "sharedWorkspace openURL: " + address;
}

class Mails : public PanelTest {
protected:
    void SetUp() override { wake(); }
};

TEST_F(Mails, TheSupportMailIsFilledIn) {
    sim.nib().send("sendEmailtoMe:");
    EXPECT_THAT(sim.takeCalls(), ElementsAre(opening(supportMail)));
}

TEST_F(Mails, TheSystemsVersionIsEncodedByteByByte) {
    sim.processInfo().version = "Système 1/2 100% #3?\" %@ %d";
    sim.nib().send("sendEmailtoMe:");
    EXPECT_THAT(
        sim.takeCalls(),
        ElementsAre(HasSubstr(
            "my%20OS:Syst%C3%A8me%201%2F2%20100%25%20%233%3F%22%20%25%40%20%25d%0Amy%20issue:")));
}

TEST_F(Mails, TheFeatureRequestAsksFirst) {
    sim.alerts().answer(1002);
    sim.nib().send("featureRequest:");
    ASSERT_EQ(sim.alerts().shown().size(), 1U);
    const SimShownAlert alert = sim.alerts().shown().front();
    EXPECT_EQ(alert.message, "Need more functions? or have some ideas?");
    EXPECT_EQ(alert.informativeText,
              "Plese visit app's home page and leave your request there. You may also drop us an "
              "email or check out all our apps up to now.");
    EXPECT_THAT(alert.buttons, ElementsAre("feature request", "more by mantisQRX", "cancel"));
    EXPECT_TRUE(alert.transparentTitleBar);
    EXPECT_EQ(alert.accessoryView, nullptr);
}

TEST_F(Mails, TheFirstButtonOpensTheStorePageAndALittleLaterTheMail) {
    sim.setDate(1000.0);
    sim.nib().send("featureRequest:");
    EXPECT_THAT(takeProcedure(sim), ElementsAre("alert1 runModal", opening(ownStorePage),
                                                "dateWithTimeIntervalSinceNow: 0.1",
                                                "runUntilDate: 1000.1", opening(requestMail)));
    EXPECT_EQ(sim.loop().date().timeIntervalSince1970, 1000.1);
}

TEST_F(Mails, TheOtherButtonsSendNoMail) {
    for (const NSModalResponse answer : {NSModalResponse{1002}, NSModalResponseCancel}) {
        sim.alerts().answer(answer);
        sim.nib().send("featureRequest:");
        EXPECT_THAT(takeProcedure(sim), ElementsAre(HasSubstr("runModal")));
    }
    sim.alerts().answer(1001);
    sim.nib().send("featureRequest:");
    EXPECT_THAT(takeProcedure(sim), ElementsAre("alert3 runModal", opening(developerSearchLink)));
}

TEST_F(Mails, TheLinksOpenTheirPagesAndReportNoFailure) {
    for (const bool opens : {true, false}) {
        sim.workspace().opens = opens;
        sim.nib().send("rateMe:");
        sim.nib().send("moreBYmantisqrx:");
        EXPECT_THAT(sim.takeCalls(),
                    ElementsAre(opening(ownStorePage), opening(developerSearchLink)));
    }
}

} // namespace
} // namespace vistrane
