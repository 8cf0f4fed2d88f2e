#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/app/Published.h"
#include "core/folder/SortedFrames.h"
#include "platform/appkit/NSApplication.h"
#include "platform/appkit/NSButton.h"
#include "platform/appkit/NSImageView.h"
#include "platform/appkit/NSPopUpButton.h"
#include "platform/appkit/NSProgressIndicator.h"
#include "platform/appkit/NSSlider.h"
#include "platform/appkit/NSTextField.h"
#include "platform/appkit/NSView.h"
#include "platform/appkit/NSWindow.h"
#include "platform/avfoundation/AVCaptureDevice.h"
#include "platform/avfoundation/AVCaptureFileOutput.h"
#include "platform/avfoundation/AVCapturePhotoOutput.h"
#include "platform/avfoundation/AVCaptureSession.h"
#include "platform/corevideo/CoreVideo.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/NSThread.h"
#include "platform/foundation/NSTimer.h"
#include "platform/foundation/NSURL.h"
#include "platform/platform.h"

namespace vistrane {

class AVAssetWriter;
class AVAssetWriterInputPixelBufferAdaptor;
class NSNib;
struct PictureSize;

/// The application controller: owns the main window's controls and all state of capture, project
/// folder, frame list, preview and compile, and carries out every action.
///
/// Contents
///   fields ............. in their fixed order, with who writes them
///   life cycle ......... core/app/life_cycle.cpp, core/app/connections.cpp
///   appearance ......... core/app/appearance.cpp
///   settings ........... core/app/settings.cpp
///   project folder ..... core/folder/project_folder.cpp
///   frame list ......... core/folder/frame_list.cpp
///   devices, session ... core/capture/devices.cpp
///   interval, schedule . core/capture/schedule.cpp
///   stills ............. core/capture/stills.cpp
///   preview ............ core/preview/player.cpp
///   compile job ........ core/compiler/compile_job.cpp
///   movie writer ....... core/compiler/movie_writer.cpp
///   pixel buffers ...... core/compiler/pixel_buffer.cpp
///
/// Everything runs on the main thread, except `threadMain`, `crateMovieFile` and
/// `fastImageFromNSImage`, which run on the compile thread; docs/threads.md says what that thread
/// touches. The controller lives as long as the process, so it outlives its timers, threads and
/// queued work. Actions ignore their sender.
///
/// Several names are misspelled on purpose: they are part of the interface.
class AppDelegate : public NSObject,
                    public NSApplicationDelegate,
                    public AVCaptureFileOutputDelegate,
                    public AVCapturePhotoCaptureDelegate {
public:
    explicit AppDelegate(const Platform& platform);

    // ---- Outlets: filled from the interface file, never replaced ------------------------------
    // Controls also hold state: outfolderB's title is the folder, photoSlider's value the current
    // frame, startB's title the capture mode.
    std::shared_ptr<NSWindow> myWindow;
    std::shared_ptr<NSTextField> hInput; ///< interval: hours, minutes, seconds
    std::shared_ptr<NSTextField> mInput;
    std::shared_ptr<NSTextField> sInput;
    std::shared_ptr<NSTextField> fpsD;  ///< "( fps = %d )"
    std::shared_ptr<NSTextField> timeD; ///< "( t = %d s )"
    std::shared_ptr<NSSlider> fpsS;
    std::shared_ptr<NSButton> startB;
    std::shared_ptr<NSButton> oneB;
    /// Saved and restored. Has no other effect, on purpose.
    std::shared_ptr<NSButton> slowB;
    std::shared_ptr<NSButton> compilingB;
    /// The title is the folder's path or the placeholder; written by the project folder only.
    std::shared_ptr<NSButton> outfolderB;
    /// Unused; may be missing.
    std::shared_ptr<NSImageView> leadingImage;
    std::shared_ptr<NSPopUpButton> AVDevicePopUp;
    /// May be missing.
    std::shared_ptr<NSView> previewView;
    std::shared_ptr<NSSlider> photoSlider;
    /// Written by stills, frame list, preview and (through the main queue) the compile job.
    std::shared_ptr<NSImageView> myDisplay;
    std::shared_ptr<NSTextField> currentS;
    std::shared_ptr<NSProgressIndicator> progressBar;
    std::shared_ptr<NSButton> previewPlayButton;

    // ---- Written at launch ---------------------------------------------------------------------
    std::shared_ptr<AVCaptureVideoPreviewLayer> previewLayer;
    /// One session for the life of the process. Selecting a device replaces its input.
    std::shared_ptr<AVCaptureSession> aSession;
    /// The template of every still: copied, but never used itself.
    std::shared_ptr<AVCapturePhotoSettings> photoOutputSettings;

    // ---- Written by the devices ----------------------------------------------------------------
    std::shared_ptr<AVCaptureDeviceDiscoverySession> allDivicesDiscovery;
    /// Written, but never read.
    std::shared_ptr<AVCaptureConnection> con;
    /// Written at launch.
    std::shared_ptr<AVCapturePhotoOutput> stillPhotoOutput;
    /// Written at launch; index i belongs to item i of the pop-up.
    std::vector<std::shared_ptr<AVCaptureDevice>> allAVdevices;

    // ---- Written by the compile job ------------------------------------------------------------
    /// Read by the compile thread.
    Published<const std::string> finalMoviePath;

    // ---- Written by the frame list -------------------------------------------------------------
    /// Full paths, sorted; null before the first listing. Replaced whole, and only if its contents
    /// differ. The compile thread reads the current list at every step.
    Published<const std::vector<std::string>> pictureArray;

    // ---- Written by the preview ----------------------------------------------------------------
    /// Index into the frame list. Written by the frame list too.
    std::int64_t playing = 0;
    /// The preview plays exactly while this timer is valid.
    std::shared_ptr<NSTimer> playTimer;

    // ---- Written by the frame list -------------------------------------------------------------
    std::shared_ptr<NSTimer> arrayTimer;

    // ---- Written by the compile job and, at the end of a pass, by the movie writer -------------
    Published<NSThread> myThread;

    // ---- Written by the project folder ---------------------------------------------------------
    /// Empty until the folder dialog is first used. Never read.
    std::optional<std::string> gotFolder;
    std::optional<NSURL> bookmarkFileURL;

    // ---- Written by the schedule ---------------------------------------------------------------
    /// After a stop the invalid timer is kept.
    std::shared_ptr<NSTimer> myTimer;
    /// Seconds; from 1 to 3,599,999 once `timeIntervalchanged` has run.
    std::int32_t realInterval = 0;

    // ---- Life cycle ----------------------------------------------------------------------------
    /// Fills the outlets and registers the actions. Returns the names of the required outlets that
    /// the interface file lacks.
    std::vector<std::string> connectInterface(NSNib& nib);
    /// Call once, after `connectInterface` and before the launch.
    void awakeFromNib();
    void applicationDidFinishLaunching() override;
    void applicationWillTerminate() override;
    bool applicationShouldTerminateAfterLastWindowClosed() override;
    void realHide(NSObject* sender);
    void realUnhide(NSObject* sender);
    void whatisFPS(NSObject* sender);

    // ---- Appearance ----------------------------------------------------------------------------
    void darkModeChanged(NSObject* sender);

    // ---- Settings ------------------------------------------------------------------------------
    void userDefaultsLoad();
    void userDefaultsSave();
    void rateChanged(NSObject* sender);

    // ---- Project folder ------------------------------------------------------------------------
    void outputFolder(NSObject* sender);
    void checkUserFolder(NSObject* sender);

    // ---- Frame list ----------------------------------------------------------------------------
    void startMonitoringFolder(NSObject* sender);
    void startArrayTimer(NSTimer* timer);
    void refreshArray(NSObject* sender);

    // ---- Devices and session -------------------------------------------------------------------
    /// Also appends each returned device to the pop-up, in the same order.
    std::vector<std::shared_ptr<AVCaptureDevice>> devicesThatCanProduceVideo();
    void selectAVDevice(NSObject* sender);

    // ---- Interval and schedule -----------------------------------------------------------------
    void timeIntervalchanged(NSObject* sender);
    void startRunning(NSObject* sender);
    void startTheTimer(NSTimer* timer);
    bool
    captureOutputShouldProvideSampleAccurateRecordingStart(AVCaptureFileOutput* output) override;

    // ---- Stills --------------------------------------------------------------------------------
    void addFrameClick(NSObject* sender);
    void addPhotoFrame();
    void captureOutputDidFinishProcessingPhoto(AVCapturePhotoOutput& output,
                                               const AVCapturePhoto* photo,
                                               const std::optional<NSError>& error) override;
    void saveTheimage(const std::shared_ptr<NSImage>& image);

    // ---- Preview -------------------------------------------------------------------------------
    /// Shows the frame that the slider selects. A running playback continues from there.
    void sliderDisplaying(NSObject* sender);
    /// Starts the playback at the first frame, or stops it.
    void playPictures(NSObject* sender);
    /// Shows the next frame, or ends the playback after the last one.
    void startPlayTimer(NSTimer* timer);

    // ---- Compile job ---------------------------------------------------------------------------
    void genneratingMovie(NSObject* sender);
    /// The compile thread's entry.
    void threadMain();

    // ---- Movie writer: compile thread ----------------------------------------------------------
    /// One pass.
    void crateMovieFile();

    // ---- Pixel buffers: compile thread ---------------------------------------------------------
    /// Draws the picture into a new buffer of its size in points, truncated. The caller owns the
    /// result. Null for a missing picture, or if nothing can be drawn.
    CVPixelBufferRef fastImageFromNSImage(const std::shared_ptr<NSImage>& image);

private:
    void writeMovie(AVAssetWriter& writer, const std::shared_ptr<NSImage>& firstImage,
                    PictureSize size);
    void movieCouldNotBeCreated(const NSError& error);
    /// Tells which frames the pass will load next, by the current list.
    void expectFramesFrom(std::int32_t index);
    void appendOtherFrames(AVAssetWriter& writer, AVAssetWriterInputPixelBufferAdaptor& adaptor);
    void postProgressReset();
    void postFrameProgress(const std::string& path, std::int32_t index);
    void postJobEnd();

    Platform platform_;
    /// State of the frame list: the last listing and its frames.
    SortedFrames sortedFrames_;
};

} // namespace vistrane
