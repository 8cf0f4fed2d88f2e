#include "core/app/AppDelegate.h"

#include <algorithm>

#include "core/app/standard_alert.h"
#include "core/compiler/compile_job.h"
#include "core/compiler/frame_time.h"
#include "core/compiler/picture_size.h"
#include "platform/appkit/AppKit.h"
#include "platform/avfoundation/AVFoundation.h"
#include "platform/foundation/Foundation.h"
#include "platform/foundation/NSString.h"

namespace vistrane {

namespace {

using FrameList = Published<const std::vector<std::string>>;

/// The entry at `index` of the current list; nothing past its end.
std::optional<std::string> frameAt(const FrameList& list, std::int32_t index) {
    const auto frames = list.load();
    if (!frames || frames->size() <= static_cast<std::size_t>(index)) {
        return std::nullopt;
    }
    return (*frames)[static_cast<std::size_t>(index)];
}

bool hasFrame(const FrameList& list, std::int32_t index) {
    return frameAt(list, index).has_value();
}

std::shared_ptr<NSImage> loadFrame(AppKit& appKit, const std::optional<std::string>& path) {
    return path ? appKit.imageWithContentsOfFile(*path) : nullptr;
}

/// Clamps a side to the range of a signed 32-bit number. The settings hold 64-bit numbers.
std::int64_t signedSide(std::uint64_t side) {
    return static_cast<std::int64_t>(std::min<std::uint64_t>(side, INT32_MAX));
}

NSDictionary outputSettings(PictureSize size) {
    return {{AVVideoCodecKey, AVVideoCodecTypeH264},
            {AVVideoScalingModeKey, AVVideoScalingModeResizeAspect},
            {AVVideoWidthKey, signedSide(size.width)},
            {AVVideoHeightKey, signedSide(size.height)}};
}

NSDictionary sourceAttributes(PictureSize size) {
    return {{kCVPixelBufferPixelFormatTypeKey, std::uint64_t{kCVPixelFormatType_32ARGB}},
            {kCVPixelBufferWidthKey, static_cast<std::uint64_t>(signedSide(size.width))},
            {kCVPixelBufferHeightKey, static_cast<std::uint64_t>(signedSide(size.height))}};
}

void release(CoreVideo& video, CVPixelBufferRef buffer) {
    if (buffer) {
        video.CVBufferRelease(buffer);
    }
}

} // namespace

void AppDelegate::crateMovieFile() {
    const auto firstImage = loadFrame(platform_.appKit, frameAt(pictureArray, 0));
    const PictureSize size = truncatedSize(firstImage);
    const auto path = finalMoviePath.load();
    const AVAssetWriterResult created = platform_.avFoundation.assetWriterWithURL(
        NSURL::fileURLWithPath(*path), AVFileTypeQuickTimeMovie);
    if (created.error) {
        movieCouldNotBeCreated(*created.error);
        return;
    }
    writeMovie(*created.writer, firstImage, size);
}

void AppDelegate::movieCouldNotBeCreated(const NSError& error) {
    platform_.foundation.NSLog(
        stringWithFormat("error creating AssetWriter: %@", {error.description()}));
    runStandardAlert(platform_.appKit,
                     "Vistran movie compiling error:", error.localizedDescription);
    compilingB->setEnabled(true);
}

void AppDelegate::writeMovie(AVAssetWriter& writer, const std::shared_ptr<NSImage>& firstImage,
                             PictureSize size) {
    AVFoundation& avFoundation = platform_.avFoundation;
    const auto input =
        avFoundation.assetWriterInputWithMediaType(AVMediaTypeVideo, outputSettings(size));
    const auto adaptor = avFoundation.assetWriterInputPixelBufferAdaptorWithAssetWriterInput(
        input, sourceAttributes(size));
    writer.addInput(input);
    input->setExpectsMediaDataInRealTime(true);
    writer.startWriting();
    writer.startSessionAtSourceTime(kCMTimeZero);

    expectFramesFrom(1);
    const CVPixelBufferRef firstBuffer = fastImageFromNSImage(firstImage);
    if (!adaptor->appendPixelBuffer(firstBuffer, kCMTimeZero)) {
        platform_.foundation.NSLog("failed appending #1 buffer");
    }
    release(platform_.coreVideo, firstBuffer);
    postProgressReset();

    appendOtherFrames(writer, *adaptor);
    platform_.appKit.expectImages(nullptr, 0, ImageUse::Movie);

    input->markAsFinished();
    Foundation& foundation = platform_.foundation;
    writer.finishWritingWithCompletionHandler(
        [&foundation] { foundation.NSLog("finished writing"); });
    // An unbalanced release, on purpose: this pass never retained the pool.
    platform_.coreVideo.CVPixelBufferPoolRelease(adaptor->pixelBufferPool());
    if (const auto thread = myThread.load()) {
        thread->cancel();
    }
    myThread.store(nullptr);
    postJobEnd();
    platform_.appKit.sharedWorkspace().openURL(NSURL::fileURLWithPath(*finalMoviePath.load()));
}

void AppDelegate::expectFramesFrom(std::int32_t index) {
    platform_.appKit.expectImages(pictureArray.load(), static_cast<std::size_t>(index),
                                  ImageUse::Movie);
}

void AppDelegate::appendOtherFrames(AVAssetWriter& writer,
                                    AVAssetWriterInputPixelBufferAdaptor& adaptor) {
    // Every step reads the current list, so frames that are added meanwhile are written too.
    std::int32_t i = 1;
    while (hasFrame(pictureArray, i)) {
        if (adaptor.assetWriterInput().isReadyForMoreMediaData()) {
            const CMTime time = framePresentationTime(i, compileFrameRate());
            const auto path = frameAt(pictureArray, i);
            if (!path) {
                return; // the list became shorter while the input waited for room
            }
            postFrameProgress(*path, i);
            const auto image = platform_.appKit.imageWithContentsOfFile(*path);
            expectFramesFrom(i + 1);
            const CVPixelBufferRef buffer = fastImageFromNSImage(image);
            if (!adaptor.appendPixelBuffer(buffer, time)) {
                platform_.foundation.NSLog(stringWithFormat("failed append buffer with error: %@",
                                                            {describe(writer.error())}));
            }
            release(platform_.coreVideo, buffer);
            ++i;
        } else {
            // Retries immediately and without limit. `isReadyForMoreMediaData` itself waits a
            // moment for room.
            platform_.foundation.NSLog(stringWithFormat("error:adaptor not ready when i=%d", {i}));
            platform_.foundation.NSLog(stringWithFormat(
                "treating frame again at: %@", {frameAt(pictureArray, i).value_or("(null)")}));
        }
    }
}

} // namespace vistrane
