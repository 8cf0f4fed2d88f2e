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
/// touches. The controller outlives its timers, threads and queued work: it lives as long as the
/// process. Actions take the sender and ignore it.
///
/// Several names are misspelled on purpose: they are part of the interface.
class AppDelegate : public NSObject,
                    public NSApplicationDelegate,
                    public AVCaptureFileOutputDelegate,
                    public AVCapturePhotoCaptureDelegate {
public:
    explicit AppDelegate(const Platform& platform);

    // ---- Outlets: filled from the interface file, never replaced ------------------------------
    // Controls double as state: the folder is outfolderB's title, the current frame photoSlider's
    // value, the capture mode startB's title.
    std::shared_ptr<NSWindow> myWindow;
    std::shared_ptr<NSTextField> hInput; ///< interval: hours, minutes, seconds
    std::shared_ptr<NSTextField> mInput;
    std::shared_ptr<NSTextField> sInput;
    std::shared_ptr<NSTextField> fpsD;  ///< "( fps = %d )"
    std::shared_ptr<NSTextField> timeD; ///< "( t = %d s )"
    std::shared_ptr<NSSlider> fpsS;
    std::shared_ptr<NSButton> startB;
    std::shared_ptr<NSButton> oneB;
    /// Saved and restored; on purpose nothing else acts on it.
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
    /// Written by stills, frame list, preview and, through the main queue, the compile job.
    std::shared_ptr<NSImageView> myDisplay;
    std::shared_ptr<NSTextField> currentS;
    std::shared_ptr<NSProgressIndicator> progressBar;
    std::shared_ptr<NSButton> previewPlayButton;

    // ---- Written at launch ---------------------------------------------------------------------
    std::shared_ptr<AVCaptureVideoPreviewLayer> previewLayer;
    /// One session for the life of the process, emptied and refilled by the devices.
    std::shared_ptr<AVCaptureSession> aSession;
    /// The template of every still; copied, never used itself.
    std::shared_ptr<AVCapturePhotoSettings> photoOutputSettings;

    // ---- Written by the devices ----------------------------------------------------------------
    std::shared_ptr<AVCaptureDeviceDiscoverySession> allDivicesDiscovery;
    /// Kept for reference; nothing reads it.
    std::shared_ptr<AVCaptureConnection> con;
    /// Written at launch.
    std::shared_ptr<AVCapturePhotoOutput> stillPhotoOutput;
    /// Written at launch; index i belongs to item i of the pop-up.
    std::vector<std::shared_ptr<AVCaptureDevice>> allAVdevices;

    // ---- Written by the compile job ------------------------------------------------------------
    /// Read by the compile thread.
    Published<const std::string> finalMoviePath;

    // ---- Written by the frame list -------------------------------------------------------------
    /// Full paths, sorted; null before the first listing. Replaced whole, and only when its
    /// contents differ. Read live by the compile thread.
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
    /// Empty until the folder dialog was first used; nothing reads it.
    std::optional<std::string> gotFolder;
    std::optional<NSURL> bookmarkFileURL;

    // ---- Written by the schedule ---------------------------------------------------------------
    /// Kept, invalid, after a stop.
    std::shared_ptr<NSTimer> myTimer;
    /// Seconds; from 1 to 3,599,999 once `timeIntervalchanged` has run.
    std::int32_t realInterval = 0;

    // ---- Life cycle ----------------------------------------------------------------------------
    /// Fills the outlets and offers the actions. Returns the names of the required outlets that
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
    /// Appends an item to the pop-up for each device that it returns, in the same order.
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
    /// Shows the frame under the frame slider. A running playback goes on from there.
    void sliderDisplaying(NSObject* sender);
    /// Starts the playback at the first frame, or stops it.
    void playPictures(NSObject* sender);
    /// Shows one frame, or ends the playback past the last.
    void startPlayTimer(NSTimer* timer);

    // ---- Compile job ---------------------------------------------------------------------------
    void genneratingMovie(NSObject* sender);
    /// The compile thread's entry.
    void threadMain();

    // ---- Movie writer: compile thread ----------------------------------------------------------
    /// One pass.
    void crateMovieFile();

    // ---- Pixel buffers: compile thread ---------------------------------------------------------
    /// A new buffer of the picture's size in points, truncated, owned by the caller; null for a
    /// missing picture or when nothing can be drawn.
    CVPixelBufferRef fastImageFromNSImage(const std::shared_ptr<NSImage>& image);

private:
    void writeMovie(AVAssetWriter& writer, const std::shared_ptr<NSImage>& firstImage,
                    PictureSize size);
    void movieCouldNotBeCreated(const NSError& error);
    void appendOtherFrames(AVAssetWriter& writer, AVAssetWriterInputPixelBufferAdaptor& adaptor);
    void postProgressReset();
    void postFrameProgress(const std::string& path, std::int32_t index);
    void postJobEnd();

    Platform platform_;
    /// State of the frame list: the result of the last listing.
    SortedFrames sortedFrames_;
};

} // namespace vistrane
