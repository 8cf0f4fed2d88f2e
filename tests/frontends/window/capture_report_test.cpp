#include "frontends/window/CaptureReport.h"

#include <cerrno>

#include <gtest/gtest.h>

namespace vistrane {
namespace {

NSError systemErrorWith(int number) {
    return {"NSPOSIXErrorDomain", number, "Cannot write the file /a/b.png"};
}

class CaptureReportTest : public ::testing::Test {
protected:
    void save() {
        report_.stillIsBeingHandled();
        report_.fileWasWritten();
        report_.stillWasHandled();
    }
    void lose(const NSError& reason) {
        report_.stillIsBeingHandled();
        report_.fileCouldNotBeWritten(reason);
        report_.stillWasHandled();
    }
    std::string warning() const { return report_.text({}).warning; }

    CaptureReport report_;
};

TEST_F(CaptureReportTest, TellsIntervalNextAndSaved) {
    save();
    save();
    const CaptureReport::Text text = report_.text({30.0, 11.2});
    EXPECT_EQ(text.status, "Capturing every 30 s, next in 12 s, 2 saved");
    EXPECT_EQ(text.calmStatus, "Capturing every 30 s, 2 saved");
    EXPECT_EQ(text.warning, "");
}

TEST_F(CaptureReportTest, GivesDurationsInTheirUnits) {
    const auto start = [this](double interval, double next) {
        const std::string status = report_.text({interval, next}).status;
        return status.substr(0, status.find(", 0 saved"));
    };
    EXPECT_EQ(start(1.0, 1.0), "Capturing every 1 s, next in 1 s");
    EXPECT_EQ(start(90.0, 60.0), "Capturing every 1 min 30 s, next in 1 min");
    EXPECT_EQ(start(3600.0, 3599.5), "Capturing every 1 h, next in 1 h");
    EXPECT_EQ(start(3599999.0, 3599999.0),
              "Capturing every 999 h 59 min 59 s, next in 999 h 59 min");
    EXPECT_EQ(start(7205.0, 3605.0), "Capturing every 2 h 5 s, next in 1 h");
}

TEST_F(CaptureReportTest, TellsThatADialogHoldsTheCaptureBack) {
    const CaptureReport::Text text = report_.text({5.0, 1.0, true});
    EXPECT_EQ(text.status, "Capturing every 5 s, held back by the open dialog, 0 saved");
    EXPECT_EQ(text.calmStatus, text.status);
}

TEST_F(CaptureReportTest, CountsWhatIsLostWithTheLastReason) {
    for (const auto& [number, reason] : {std::pair(EIO, "Input/output error"),
                                         {ENOSPC, "disk full"},
                                         {ENOENT, "folder missing"},
                                         {EACCES, "no permission to write"},
                                         {EROFS, "disk is read-only"}}) {
        report_.begin();
        lose(systemErrorWith(EIO));
        lose(systemErrorWith(number));
        EXPECT_EQ(warning(), std::string("2 not saved (") + reason + ")");
    }
    EXPECT_NE(report_.text({5.0, 1.0}).status.find(", 0 saved"), std::string::npos);
}

TEST_F(CaptureReportTest, AStillWithoutAFileIsLostForAnUntoldReason) {
    lose(systemErrorWith(ENOSPC));
    report_.stillIsBeingHandled();
    report_.stillWasHandled();
    EXPECT_EQ(warning(), "2 not saved");
}

TEST_F(CaptureReportTest, AStillThatComesWhileADialogIsUpForAnotherOneIsCountedByItself) {
    report_.stillIsBeingHandled();
    save();
    report_.stillWasHandled();
    EXPECT_EQ(warning(), "1 not saved");
    EXPECT_NE(report_.text({5.0, 1.0}).status.find(", 1 saved"), std::string::npos);
}

TEST_F(CaptureReportTest, ARunBeginsAtNothing) {
    save();
    lose(systemErrorWith(ENOSPC));
    report_.begin();
    EXPECT_EQ(warning(), "");
    EXPECT_NE(report_.text({5.0, 1.0}).status.find(", 0 saved"), std::string::npos);
}

} // namespace
} // namespace vistrane
