#include "tests/support/ControllerTest.h"

namespace vistrane {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

const std::string placeholder = "click to select the output folder";
const std::string rejectionText =
    "You canceled saving folder selection or the folder you selected is NOT recommended as a "
    "working folder. Please make sure it is not located on any removable volume and make selection "
    "again.\n";

class ProjectFolder : public ControllerTest {
protected:
    SimUserDefaults::Value& iData() { return sim.defaults().values["iData"]; }

    /// The calls that follow the panel's own, which must come first.
    std::vector<std::string> takeCallsAfterThePanel() {
        std::vector<std::string> calls = takeProcedure();
        const std::vector<std::string> panel = {
            "openPanel setTitle: Select Output Folder to Save the Capture",
            "openPanel setCanChooseDirectories: YES",
            "openPanel setCanCreateDirectories: YES",
            "openPanel setAllowsMultipleSelection: NO",
            "openPanel setCanChooseFiles: NO",
            "openPanel setPrompt: Save to This Folder",
            "openPanel runModal"};
        EXPECT_GE(calls.size(), panel.size());
        const auto end = calls.begin() + static_cast<std::ptrdiff_t>(panel.size());
        EXPECT_THAT(std::vector<std::string>(calls.begin(), end), ElementsAreArray(panel));
        calls.erase(calls.begin(), end);
        return calls;
    }

    void expectNoFolder() {
        EXPECT_EQ(folderTitle(), placeholder);
        EXPECT_EQ(delegate.gotFolder, placeholder);
        EXPECT_EQ(button("outfolderB").currentState, 1);
    }
};

TEST_F(ProjectFolder, CancellingThePanelClearsTheFolderWithoutAnAlert) {
    button("outfolderB").currentTitle = "/old";
    iData() = SimBookmarks::of("/old");
    sim.openPanels().cancel();
    delegate.outputFolder(nullptr);
    EXPECT_THAT(takeCallsAfterThePanel(),
                ElementsAre("outfolderB setTitle: " + placeholder, "outfolderB setState: 1"));
    expectNoFolder();
    EXPECT_EQ(iData(), SimUserDefaults::Value(SimBookmarks::of("/old")));
    EXPECT_THAT(sim.alerts().shown(), IsEmpty());
}

class RejectedChoice : public ProjectFolder,
                       public ::testing::WithParamInterface<std::optional<NSURL>> {};

TEST_P(RejectedChoice, ShowsTheAlertAndClearsTheFolder) {
    button("outfolderB").currentTitle = "/old";
    iData() = SimBookmarks::of("/old");
    sim.openPanels().confirmWith(GetParam());
    sim.alerts().whileUp([&](const SimShownAlert&) { EXPECT_EQ(folderTitle(), "/old"); });
    delegate.outputFolder(nullptr);
    EXPECT_THAT(takeCallsAfterThePanel(),
                ElementsAre("alert1 runModal", "outfolderB setTitle: " + placeholder,
                            "outfolderB setState: 1"));
    ASSERT_EQ(sim.alerts().shown().size(), 1U);
    expectStandardAlert(sim.alerts().shown().at(0), "Not a valid working folder", rejectionText);
    expectNoFolder();
    EXPECT_EQ(iData(), SimUserDefaults::Value(SimBookmarks::of("/old")));
}

INSTANTIATE_TEST_SUITE_P(NoPath, RejectedChoice, ::testing::Values(std::nullopt));
INSTANTIATE_TEST_SUITE_P(EmptyPath, RejectedChoice,
                         ::testing::Values(NSURL::fileURLWithPath(""),
                                           NSURL::URLWithString("https://example.org/a")));
INSTANTIATE_TEST_SUITE_P(RootFolder, RejectedChoice,
                         ::testing::Values(NSURL::fileURLWithPath("/"),
                                           NSURL::fileURLWithPath("//")));

TEST_F(ProjectFolder, AConfirmedChoiceIsShownAndRemembered) {
    sim.openPanels().choose("/Users/a/Frames");
    delegate.outputFolder(nullptr);
    EXPECT_THAT(
        takeCallsAfterThePanel(),
        ElementsAre("alert1 runModal", "outfolderB setTitle: /Users/a/Frames",
                    "bookmarkDataWithOptions: 2048 of: file:///Users/a/Frames",
                    "standardUserDefaults setObject: bookmark of /Users/a/Frames forKey: iData",
                    "standardUserDefaults synchronize", "outfolderB setState: 1"));
    EXPECT_EQ(folderTitle(), "/Users/a/Frames");
    EXPECT_EQ(delegate.gotFolder, "/Users/a/Frames");
    EXPECT_EQ(sim.defaults().durableValues.count("iData"), 1U);
}

TEST_F(ProjectFolder, TheConfirmationNamesThePathAndOffersOkFirst) {
    sim.openPanels().choose("/Users/a/Frames");
    delegate.outputFolder(nullptr);
    ASSERT_EQ(sim.alerts().shown().size(), 1U);
    const SimShownAlert alert = sim.alerts().shown().at(0);
    EXPECT_EQ(alert.message, "Destination Path Confirmation:");
    EXPECT_EQ(alert.informativeText, "All Capturess will be saved to: /Users/a/Frames\n");
    EXPECT_THAT(alert.buttons, ElementsAre("Ok", "Cancel"));
    EXPECT_FALSE(alert.transparentTitleBar);
    EXPECT_THAT(sim.calls(), Not(Contains(StartsWith("alert1.window"))));
}

TEST_F(ProjectFolder, APathWithPlaceholdersOfAFormatIsTakenLiterally) {
    sim.openPanels().choose("/a%@%d%s");
    delegate.outputFolder(nullptr);
    EXPECT_EQ(sim.alerts().shown().at(0).informativeText,
              "All Capturess will be saved to: /a%@%d%s\n");
    EXPECT_EQ(folderTitle(), "/a%@%d%s");
}

TEST_F(ProjectFolder, AnyAnswerButOkClearsTheFolderAndKeepsTheSavedOne) {
    for (const NSModalResponse answer : {1001, 999, 1, 0, -1000}) {
        button("outfolderB").currentTitle = "/old";
        iData() = SimBookmarks::of("/old");
        sim.openPanels().choose("/new");
        sim.alerts().answer(answer);
        delegate.outputFolder(nullptr);
        const std::vector<std::string> calls = takeCallsAfterThePanel();
        EXPECT_THAT(std::vector<std::string>(calls.begin() + 1, calls.end()),
                    ElementsAre("outfolderB setTitle: " + placeholder, "outfolderB setState: 1"));
        expectNoFolder();
        EXPECT_EQ(iData(), SimUserDefaults::Value(SimBookmarks::of("/old")));
    }
}

TEST_F(ProjectFolder, AFolderOnAnotherVolumeOrNoFolderAtAllIsAcceptedLikeAnyOther) {
    for (const char* path : {"/Volumes/Disk/f", "/missing", "/ ", "/.", "/a b"}) {
        sim.openPanels().choose(path);
        delegate.outputFolder(nullptr);
        EXPECT_EQ(folderTitle(), path);
    }
    EXPECT_THAT(sim.calls(), Not(Contains(StartsWith("defaultManager"))));
}

TEST_F(ProjectFolder, ABookmarkThatCannotBeMadeKeepsTheOlderOneAndSaysNothing) {
    iData() = SimBookmarks::of("/old");
    sim.bookmarks().creationError = NSError{"d", 1, "no bookmark"};
    sim.openPanels().choose("/new");
    delegate.outputFolder(nullptr);
    EXPECT_THAT(takeCallsAfterThePanel(),
                ElementsAre("alert1 runModal", "outfolderB setTitle: /new",
                            "bookmarkDataWithOptions: 2048 of: file:///new",
                            "outfolderB setState: 1"));
    EXPECT_EQ(folderTitle(), "/new");
    EXPECT_EQ(iData(), SimUserDefaults::Value(SimBookmarks::of("/old")));
    EXPECT_EQ(sim.alerts().shown().size(), 1U);
}

TEST_F(ProjectFolder, ANewChoiceReplacesTheFolderAtOnceAndAsksForNoAccess) {
    saveFolder("/old");
    launch();
    sim.openPanels().choose("/new");
    delegate.outputFolder(nullptr);
    EXPECT_EQ(folderTitle(), "/new");
    EXPECT_EQ(delegate.bookmarkFileURL->path(), "/old");
    EXPECT_THAT(sim.calls(), Not(Contains(StartsWith("startAccessing"))));
}

TEST_F(ProjectFolder, AfterACancelTheNextLaunchRestoresTheLastConfirmedFolder) {
    saveFolder("/f");
    launch();
    delegate.outputFolder(nullptr);
    ASSERT_EQ(folderTitle(), placeholder);

    Sim next;
    next.files().addFolder("/f");
    next.defaults().values = sim.defaults().values;
    AppDelegate nextDelegate(next.platform());
    nextDelegate.connectInterface(next.nib());
    nextDelegate.awakeFromNib();
    EXPECT_EQ(next.nib().button("outfolderB").currentTitle, "/f");
    EXPECT_EQ(nextDelegate.gotFolder, std::nullopt);
}

class RestoredFolder : public ProjectFolder {};

TEST_F(RestoredFolder, WithoutASavedOneThereIsNoFolder) {
    delegate.checkUserFolder(nullptr);
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("standardUserDefaults objectForKey: iData",
                            "outfolderB setTitle: " + placeholder, "outfolderB setState: 1"));
    EXPECT_EQ(delegate.bookmarkFileURL, std::nullopt);
    EXPECT_EQ(delegate.gotFolder, std::nullopt);
}

TEST_F(RestoredFolder, ASavedOneIsOpenedShownAndLeavesTheButtonsStateAlone) {
    saveFolder();
    delegate.checkUserFolder(nullptr);
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("standardUserDefaults objectForKey: iData",
                            "URLByResolvingBookmarkData: bookmark of /f options: 1024",
                            "startAccessingSecurityScopedResource: file:///f",
                            "outfolderB setTitle: /f", "defaultManager fileExistsAtPath: /f"));
    EXPECT_EQ(folderTitle(), "/f");
    EXPECT_EQ(button("outfolderB").currentState, 0);
    EXPECT_EQ(delegate.bookmarkFileURL->path(), "/f");
    EXPECT_EQ(delegate.gotFolder, std::nullopt);
}

TEST_F(RestoredFolder, AccessThatIsNotGrantedChangesNothing) {
    saveFolder();
    sim.bookmarks().grantsAccess = false;
    delegate.checkUserFolder(nullptr);
    EXPECT_EQ(folderTitle(), "/f");
}

TEST_F(RestoredFolder, ABookmarkThatDoesNotResolveGivesNoFolderAndSaysNothing) {
    saveFolder();
    sim.bookmarks().resolutionError = NSError{"d", 1, "gone"};
    delegate.checkUserFolder(nullptr);
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("standardUserDefaults objectForKey: iData",
                            "URLByResolvingBookmarkData: bookmark of /f options: 1024",
                            "outfolderB setTitle: " + placeholder, "outfolderB setState: 1"));
    EXPECT_EQ(delegate.bookmarkFileURL, std::nullopt);
    EXPECT_EQ(iData(), SimUserDefaults::Value(SimBookmarks::of("/f")));
}

TEST_F(RestoredFolder, AnOldAddressIsForgottenFirst) {
    delegate.bookmarkFileURL = NSURL::fileURLWithPath("/old");
    delegate.checkUserFolder(nullptr);
    EXPECT_EQ(delegate.bookmarkFileURL, std::nullopt);
}

TEST_F(RestoredFolder, AFileInItsPlaceIsAccepted) {
    sim.files().addFile("/f");
    iData() = SimBookmarks::of("/f");
    delegate.checkUserFolder(nullptr);
    EXPECT_EQ(folderTitle(), "/f");
    EXPECT_EQ(button("outfolderB").currentState, 0);
}

TEST_F(RestoredFolder, OneThatHasVanishedIsGivenUpButStaysSaved) {
    iData() = SimBookmarks::of("/f");
    delegate.checkUserFolder(nullptr);
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("standardUserDefaults objectForKey: iData",
                            "URLByResolvingBookmarkData: bookmark of /f options: 1024",
                            "startAccessingSecurityScopedResource: file:///f",
                            "outfolderB setTitle: /f", "defaultManager fileExistsAtPath: /f",
                            "outfolderB setTitle: " + placeholder, "outfolderB setState: 1"));
    EXPECT_EQ(iData(), SimUserDefaults::Value(SimBookmarks::of("/f")));
}

TEST_F(RestoredFolder, BytesThatAreNoBookmarkGiveNoFolder) {
    iData() = std::vector<std::uint8_t>{'/', 'f'};
    delegate.checkUserFolder(nullptr);
    EXPECT_EQ(folderTitle(), placeholder);
    EXPECT_EQ(delegate.bookmarkFileURL, std::nullopt);
}

TEST_F(RestoredFolder, AValueOfAnotherKindCountsAsNone) {
    iData() = std::string("/f");
    delegate.checkUserFolder(nullptr);
    EXPECT_EQ(folderTitle(), placeholder);
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
