#include "tests/support/ControllerTest.h"

namespace vistrane {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

const std::string rejectionText =
    "You canceled saving folder selection or the folder you selected is NOT recommended as a "
    "working folder. Please make sure it is not located on any removable volume and make selection "
    "again.\n";

class ProjectFolder : public ControllerTest {
protected:
    SimUserDefaults::Value& iData() { return sim.defaults().values["iData"]; }

    /// "/old" is the folder in use and the saved one; the button is off.
    void useOld() {
        folderTitle() = "/old";
        button("outfolderB").currentState = 0;
        iData() = SimBookmarks::of("/old");
    }
    void choose() {
        sim.alerts().takeShown();
        delegate.outputFolder(nullptr);
    }
    /// After a choice that was not confirmed.
    void expectNoFolderButTheOldOneSaved() {
        EXPECT_EQ(folderTitle(), placeholder);
        EXPECT_EQ(delegate.gotFolder, placeholder);
        EXPECT_EQ(button("outfolderB").currentState, 1);
        EXPECT_EQ(iData(), SimUserDefaults::Value(SimBookmarks::of("/old")));
    }
};

TEST_F(ProjectFolder, CancellingThePanelClearsTheFolderWithoutAnAlert) {
    useOld();
    choose();
    EXPECT_THAT(sim.alerts().shown(), IsEmpty());
    expectNoFolderButTheOldOneSaved();
}

TEST_F(ProjectFolder, AChoiceWithoutAPathOrOfTheRootFolderIsRejected) {
    for (const auto& url : {std::optional<NSURL>(), std::optional(NSURL::fileURLWithPath("")),
                            std::optional(NSURL::URLWithString("https://example.org/a")),
                            std::optional(NSURL::fileURLWithPath("/")),
                            std::optional(NSURL::fileURLWithPath("//"))}) {
        useOld();
        sim.alerts().confirmWith(url);
        sim.alerts().whileUp([&](const SimShownAlert&) { EXPECT_EQ(folderTitle(), "/old"); });
        choose();
        ASSERT_EQ(sim.alerts().shown().size(), 1U);
        expectStandardAlert(sim.alerts().shown().at(0), "Not a valid working folder",
                            rejectionText);
        expectNoFolderButTheOldOneSaved();
    }
}

TEST_F(ProjectFolder, AConfirmedChoiceTakesItsStepsInOrder) {
    sim.alerts().choose("/Users/a/Frames");
    choose();
    EXPECT_THAT(
        takeProcedure(),
        ElementsAre("openPanel setTitle: Select Output Folder to Save the Capture",
                    "openPanel setCanChooseDirectories: YES",
                    "openPanel setCanCreateDirectories: YES",
                    "openPanel setAllowsMultipleSelection: NO", "openPanel setCanChooseFiles: NO",
                    "openPanel setPrompt: Save to This Folder", "openPanel runModal",
                    "alert1 runModal", "outfolderB setTitle: /Users/a/Frames",
                    "bookmarkDataWithOptions: 2048 of: file:///Users/a/Frames",
                    "standardUserDefaults setObject: bookmark of /Users/a/Frames forKey: iData",
                    "standardUserDefaults synchronize", "outfolderB setState: 1"));
    EXPECT_EQ(delegate.gotFolder, "/Users/a/Frames");
    EXPECT_EQ(sim.defaults().durableValues.count("iData"), 1U);
}

TEST_F(ProjectFolder, TheConfirmationNamesThePathAndOffersOkFirst) {
    for (const std::string path : {"/Users/a/Frames", "/a%@%d%s"}) {
        sim.alerts().choose(path);
        choose();
        ASSERT_EQ(sim.alerts().shown().size(), 1U);
        const SimShownAlert alert = sim.alerts().shown().at(0);
        EXPECT_EQ(alert.message, "Destination Path Confirmation:");
        EXPECT_EQ(alert.informativeText, "All Capturess will be saved to: " + path + "\n");
        EXPECT_THAT(alert.buttons, ElementsAre("Ok", "Cancel"));
        EXPECT_FALSE(alert.transparentTitleBar);
        EXPECT_EQ(folderTitle(), path);
    }
}

TEST_F(ProjectFolder, AnyAnswerButOkClearsTheFolderAndKeepsTheSavedOne) {
    for (const NSModalResponse answer : {1001, 999, 1, 0, -1000}) {
        useOld();
        sim.alerts().choose("/new");
        sim.alerts().answer(answer);
        choose();
        expectNoFolderButTheOldOneSaved();
    }
}

TEST_F(ProjectFolder, AFolderOnAnotherVolumeOrNoFolderAtAllIsAcceptedLikeAnyOther) {
    for (const char* path : {"/Volumes/Disk/f", "/missing", "/ ", "/.", "/a b"}) {
        sim.alerts().choose(path);
        choose();
        EXPECT_EQ(folderTitle(), path);
    }
    EXPECT_THAT(sim.calls(), Not(Contains(StartsWith("defaultManager"))));
}

TEST_F(ProjectFolder, ABookmarkThatCannotBeMadeKeepsTheOlderOneAndSaysNothing) {
    useOld();
    sim.bookmarks().creationError = NSError{"d", 1, "no bookmark"};
    sim.alerts().choose("/new");
    choose();
    EXPECT_EQ(folderTitle(), "/new");
    EXPECT_EQ(button("outfolderB").currentState, 1);
    EXPECT_EQ(iData(), SimUserDefaults::Value(SimBookmarks::of("/old")));
    EXPECT_EQ(sim.alerts().shown().size(), 1U);
}

TEST_F(ProjectFolder, ANewChoiceReplacesTheFolderAtOnceAndAsksForNoAccess) {
    saveFolder("/old");
    launch();
    sim.alerts().choose("/new");
    choose();
    EXPECT_EQ(folderTitle(), "/new");
    EXPECT_EQ(delegate.bookmarkFileURL->path(), "/old");
    EXPECT_THAT(sim.calls(), Not(Contains(StartsWith("startAccessing"))));
}

class RestoredFolder : public ProjectFolder {
protected:
    void restore() { delegate.checkUserFolder(nullptr); }
    void expectNoFolder() {
        EXPECT_EQ(folderTitle(), placeholder);
        EXPECT_EQ(button("outfolderB").currentState, 1);
        EXPECT_EQ(delegate.gotFolder, std::nullopt);
        expectNoMessage();
    }
    void expectFolder() {
        EXPECT_EQ(folderTitle(), "/f");
        EXPECT_EQ(button("outfolderB").currentState, 0);
        EXPECT_EQ(delegate.bookmarkFileURL->path(), "/f");
        EXPECT_EQ(delegate.gotFolder, std::nullopt);
    }
};

TEST_F(RestoredFolder, WithoutASavedOneThereIsNoFolder) {
    delegate.bookmarkFileURL = NSURL::fileURLWithPath("/old");
    restore();
    expectNoFolder();
    EXPECT_EQ(delegate.bookmarkFileURL, std::nullopt);
}

TEST_F(RestoredFolder, ASavedOneIsOpenedAndThenShown) {
    saveFolder();
    restore();
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("standardUserDefaults objectForKey: iData",
                            "URLByResolvingBookmarkData: bookmark of /f options: 1024",
                            "startAccessingSecurityScopedResource: file:///f",
                            "outfolderB setTitle: /f", "defaultManager fileExistsAtPath: /f"));
    expectFolder();
}

TEST_F(RestoredFolder, AccessThatIsNotGrantedAndAFileInItsPlaceChangeNothing) {
    sim.bookmarks().grantsAccess = false;
    sim.files().addFile("/f");
    iData() = SimBookmarks::of("/f");
    restore();
    expectFolder();
}

TEST_F(RestoredFolder, AValueThatDoesNotResolveGivesNoFolderAndStaysSaved) {
    sim.files().addFolder("/f");
    for (const auto& value : {SimUserDefaults::Value(SimUserDefaults::Bytes{'/', 'f'}),
                              SimUserDefaults::Value(std::string("/f")),
                              SimUserDefaults::Value(SimBookmarks::of("/f"))}) {
        sim.bookmarks().resolutionError = NSError{"d", 1, "gone"};
        button("outfolderB").currentState = 0;
        iData() = value;
        restore();
        expectNoFolder();
        EXPECT_EQ(delegate.bookmarkFileURL, std::nullopt);
        EXPECT_EQ(iData(), value);
    }
    EXPECT_THAT(sim.calls(), Not(Contains(StartsWith("startAccessing"))));
}

TEST_F(RestoredFolder, OneThatHasVanishedIsDroppedButStaysSaved) {
    iData() = SimBookmarks::of("/f");
    restore();
    expectNoFolder();
    EXPECT_EQ(iData(), SimUserDefaults::Value(SimBookmarks::of("/f")));
}

TEST_F(RestoredFolder, AFolderThatVanishesLaterStaysTheFolder) {
    saveFolder();
    launch();
    sim.files().remove("/f");
    sim.advance(1.0);
    EXPECT_EQ(folderTitle(), "/f");
}

} // namespace
} // namespace vistrane
