#include "tests/support/ControllerTest.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::string frameName = "YY-MM-dd-HH-mm-ss-1000.png";

class Stills : public ControllerTest {
protected:
    void SetUp() override {
        launchWithCamera();
        sim.files().addFolder("/f");
        folderTitle() = "/f";
        sim.setDate(1000.0);
    }
    /// Requests a still and delivers it.
    void take(const std::string& contents = "picture") {
        delegate.addPhotoFrame();
        sim.takeCalls();
        sim.cameras().deliverPhoto(contents);
    }
    std::vector<std::string> files() {
        const FileNames names = *sim.files().contentsOfDirectoryAtPath("/f");
        return {names.begin(), names.end()};
    }
};

TEST_F(Stills, ARequestUsesACopyOfTheTemplate) {
    delegate.addPhotoFrame();
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("photoSettingsFromPhotoSettings: photoSettings1 -> photoSettings2",
                            "photoOutput1 capturePhotoWithSettings: photoSettings2"));
    EXPECT_EQ(nameOf(delegate.photoOutputSettings.get()), "photoSettings1");
}

TEST_F(Stills, SeveralRequestsMayBeOutstandingEachWithSettingsOfItsOwn) {
    delegate.addPhotoFrame();
    delegate.addFrameClick(nullptr);
    delegate.addPhotoFrame();
    EXPECT_EQ(button("oneB").currentState, 1);
    EXPECT_THAT(sim.cameras().pendingStills(),
                ElementsAre("photoSettings2", "photoSettings3", "photoSettings4"));
}

TEST_F(Stills, OnlyAClickAsksWhetherTheSessionRuns) {
    sim.cameras().session()->runs = false;
    delegate.addFrameClick(nullptr);
    EXPECT_EQ(button("oneB").currentState, 1);
    EXPECT_THAT(sim.cameras().pendingStills(), IsEmpty());
    expectNoMessage();
    delegate.addPhotoFrame();
    EXPECT_EQ(sim.cameras().pendingStills().size(), 1U);
}

TEST_F(Stills, APictureIsShownNamedEncodedAndWrittenInPlace) {
    take();
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("imageWithData: picture", "myDisplay setImage: picture", "date",
                            "dateFormatter setDateFormat: YY-MM-dd-HH-mm-ss",
                            "dateFormatter stringFromDate: 1000", "picture TIFFRepresentation",
                            "imageRepWithData: TIFF(picture)",
                            "TIFF(picture) representationUsingType: 4 NSImageCompressionFactor: 1",
                            "PNG(TIFF(picture)) writeToFile: /f/" + frameName + " atomically: NO"));
    EXPECT_EQ(sim.files().contents("/f/" + frameName), "PNG(TIFF(picture))");
    EXPECT_THAT(sim.alerts().shown(), IsEmpty());
}

TEST_F(Stills, TheNameCarriesTheMomentOfSavingNotThatOfTheRequest) {
    delegate.addPhotoFrame();
    sim.advance(51.0);
    sim.cameras().deliverPhoto("picture");
    EXPECT_THAT(files(), ElementsAre("YY-MM-dd-HH-mm-ss-1051.png"));
}

TEST_F(Stills, TheFolderIsTakenVerbatimFromTheTitle) {
    sim.files().addFolder("/a b/%@%d");
    folderTitle() = "/a b/%@%d";
    take();
    EXPECT_TRUE(sim.files().exists("/a b/%@%d/" + frameName));
}

TEST_F(Stills, PicturesOfTheSameSecondShareANameAndTheLatestStays) {
    take("first");
    take("second");
    EXPECT_THAT(files(), ElementsAre(frameName));
    EXPECT_EQ(sim.files().contents("/f/" + frameName), "PNG(TIFF(second))");
    // The second comes again when the clock is set back.
    sim.advance(3600.0);
    sim.setDate(1000.0);
    take("third");
    EXPECT_EQ(sim.files().contents("/f/" + frameName), "PNG(TIFF(third))");
}

TEST_F(Stills, AnErrorIsLoggedAndNothingIsShownOrSaved) {
    take("first");
    delegate.addPhotoFrame();
    sim.advance(1.0);
    sim.takeCalls();
    sim.cameras().deliverError({"Cameras", 3, "The camera has gone."});
    EXPECT_THAT(sim.takeCalls(), ElementsAre("NSLog: photoOutput error: The camera has gone."));
    EXPECT_THAT(sim.alerts().shown(), IsEmpty());
    EXPECT_EQ(files().size(), 1U);
}

TEST_F(Stills, AWriteThatFailsSaysNothingAndIsNotRepeated) {
    sim.files().addFolder("/f/" + frameName);
    take();
    EXPECT_EQ(shown(), "picture");
    sim.files().remove("/f/" + frameName);
    sim.advance(10.0);
    EXPECT_THAT(files(), IsEmpty());
    sim.files().remove("/f");
    take("other");
    EXPECT_EQ(shown(), "other");
    expectNoMessage();
}

TEST_F(Stills, WithoutAFolderThePictureIsShownAndLostWithAnAlert) {
    folderTitle() = placeholder;
    sim.alerts().whileUp([&](const SimShownAlert&) { EXPECT_EQ(shown(), "picture"); });
    take();
    EXPECT_EQ(shown(), "picture");
    ASSERT_EQ(sim.alerts().shown().size(), 1U);
    expectStandardAlert(sim.alerts().shown().at(0), "Please select the output folder",
                        "Nice shot, but unfortunately this frame of the picture has NOT been "
                        "saved. Please select the output folder first.\n");
    EXPECT_TRUE(sim.alerts().shown().at(0).onMainThread);
    EXPECT_THAT(files(), IsEmpty());
    // Every picture has an alert of its own.
    take();
    EXPECT_EQ(sim.alerts().shown().size(), 2U);
}

TEST_F(Stills, AFolderChosenBeforeThePictureArrivesIsUsed) {
    folderTitle() = placeholder;
    delegate.addPhotoFrame();
    folderTitle() = "/f";
    sim.cameras().deliverPhoto("picture");
    EXPECT_EQ(files().size(), 1U);
}

TEST_F(Stills, APictureThatCannotBeReadEmptiesTheDisplayAndIsNotSaved) {
    take("damaged");
    EXPECT_EQ(display().image, nullptr);
    EXPECT_THAT(files(), IsEmpty());
    delegate.addPhotoFrame();
    sim.cameras().deliverPhoto(std::nullopt);
    EXPECT_EQ(display().image, nullptr);
    EXPECT_THAT(files(), IsEmpty());
    EXPECT_THAT(sim.alerts().shown(), IsEmpty());
}

} // namespace
} // namespace vistrane
