#include "frontends/commandline/CompileReport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vistrane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(CompileReport, AllFramesAppendedGiveOnlyTheCount) {
    CompileReport report;
    for (const char* path : {"/f/a.png", "/f/b.png"}) {
        report.frameIsLoaded(path);
        report.frameWasAppended();
    }
    EXPECT_THAT(report.lines(), IsEmpty());
    EXPECT_EQ(report.summary(), "2 of 2 frames went into the movie.");
}

TEST(CompileReport, AFrameThatCouldNotBeReadIsNamedWithTheFilesOwnReason) {
    CompileReport report;
    report.frameIsLoaded("/f/a.png");
    report.frameCouldNotBeRead({"d", 1, "it is cut short"});
    report.frameWasRefused({"d", 2, "there is no picture"});
    report.frameIsLoaded("/f/b.png");
    report.frameWasAppended();
    EXPECT_THAT(report.lines(), ElementsAre("Not in the movie: /f/a.png: it is cut short"));
    EXPECT_EQ(report.summary(), "1 of 2 frames went into the movie.");
}

TEST(CompileReport, ARefusalOfAReadableFrameGivesItsOwnReason) {
    CompileReport report;
    report.frameIsLoaded("/f/a.png");
    report.frameCouldNotBeRead({"d", 1, "old reason"});
    report.frameWasRefused({"d", 2, "x"});
    report.frameIsLoaded("/f/b.png");
    report.frameWasRefused({"d", 2, "the disk is full"});
    EXPECT_THAT(report.lines(), ElementsAre("Not in the movie: /f/a.png: old reason",
                                            "Not in the movie: /f/b.png: the disk is full"));
    EXPECT_EQ(report.summary(), "0 of 2 frames went into the movie.");
}

TEST(CompileReport, AReasonThatNamesTheFrameStandsAlone) {
    CompileReport report;
    report.frameIsLoaded("/f/a.png");
    report.frameCouldNotBeRead({"d", 1, "The picture /f/a.png is empty"});
    report.frameWasRefused({"d", 2, "there is no picture"});
    EXPECT_THAT(report.lines(), ElementsAre("Not in the movie: The picture /f/a.png is empty"));
    EXPECT_EQ(report.summary(), "0 of 1 frames went into the movie.");
}

TEST(CompileReport, AnOddPathStandsOnceOnOneLineOfText) {
    CompileReport report;
    const std::string shown = "/f/a\xEF\xBF\xBD\xEF\xBF\xBD[2J.png";
    report.frameIsLoaded("/f/a\n\x1b[2J.png");
    report.frameCouldNotBeRead({"d", 1, "The picture " + shown + " is empty"});
    report.frameWasRefused({"d", 2, "there is no picture"});
    report.frameIsLoaded("/f/a\n\x1b[2J.png");
    report.frameWasRefused({"d", 3, "the disk is full"});
    EXPECT_THAT(report.lines(), ElementsAre("Not in the movie: The picture " + shown + " is empty",
                                            "Not in the movie: " + shown + ": the disk is full"));
    EXPECT_EQ(report.summary(), "0 of 2 frames went into the movie.");
}

TEST(CompileReport, WithoutAMovieOnlyTheFramesThatHaveAReasonOfTheirOwnAreNamed) {
    CompileReport report;
    report.frameIsLoaded("/f/a.png");
    report.frameCouldNotBeRead({"d", 1, "it is cut short"});
    report.frameWasRefused({"d", 2, "there is no picture"});
    report.frameIsLoaded("/f/b.png");
    report.frameWasAppended();
    report.frameIsLoaded("/f/c.png");
    report.frameWasRefused({"d", 3, "the disk is full"});
    EXPECT_THAT(report.linesWithoutMovie({"d", 3, "the disk is full"}),
                ElementsAre("Not in the movie: /f/a.png: it is cut short"));
}

} // namespace
} // namespace vistrane
