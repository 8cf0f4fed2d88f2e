#include "backends/pictures/Pictures.h"

#include <utility>
#include <variant>

#include "backends/pictures/BitmapContext.h"
#include "backends/pictures/MediaBitmapImageRep.h"
#include "backends/pictures/MediaImage.h"
#include "backends/pictures/PictureCache.h"
#include "backends/pictures/PictureData.h"
#include "backends/pictures/PictureSource.h"
#include "backends/pictures/PicturesAhead.h"
#include "backends/pictures/SharedPicture.h"
#include "backends/pictures/file_bytes.h"
#include "backends/pictures/graphics_state.h"
#include "backends/pictures/picture_errors.h"
#include "backends/pictures/png_header.h"

namespace vistrane {

namespace {

constexpr char dataName[] = "in memory";

std::shared_ptr<const PictureSource> sourceOf(const PictureSourceResult& result) {
    const auto* source = std::get_if<std::shared_ptr<const PictureSource>>(&result);
    return source != nullptr ? *source : nullptr;
}

PictureSourceResult pictureFromData(const std::shared_ptr<NSData>& data,
                                    const PictureLimits& limits) {
    if (const auto* carrier = dynamic_cast<const PictureData*>(data.get())) {
        return carrier->picture();
    }
    return pictureFromPng(data, dataName, limits);
}

PictureSourceResult readPicture(OpenFile& file, const std::string& path,
                                const PictureLimits& limits) {
    FileBytesResult read = file.read(pngSignature);
    if (read.error) {
        return *read.error;
    }
    return pictureFromPng(std::move(read.bytes), path, limits);
}

/// For `PicturesAhead`. The result holds the picture for the users of `cache`.
std::shared_ptr<const void> loadAhead(PictureCache& cache, const PictureLimits& limits,
                                      const std::string& path, ImageUse use,
                                      PicturesAhead::Room& room) {
    auto opened = OpenFile::at(path, limits.largestFile);
    auto* const file = std::get_if<OpenFile>(&opened);
    // From here on every change of the file gives it another state, even while it is read.
    if (file == nullptr || !file->state().isSettled() || !room.take(file->state().length)) {
        return nullptr;
    }
    const auto result = cache.picture(path, file->state(), [&]() -> PictureSourceResult {
        PictureSourceResult picture = readPicture(*file, path, limits);
        if (const auto source = sourceOf(picture); source && !source->flaw().empty()) {
            // Whoever wants it reads it again and reports the flaw.
            return pictureError(PictureFault::Damaged, path, source->flaw());
        }
        return picture;
    });
    const auto picture = std::dynamic_pointer_cast<const SharedPicture>(sourceOf(result));
    if (!picture || !room.take(file->state().length + picture->preparedBytes(use)) ||
        !picture->prepare(use)) {
        return nullptr;
    }
    // The pixels for a movie replace the file. A view may have got another size meanwhile.
    const std::size_t fileBytes = use == ImageUse::Movie ? 0 : file->state().length;
    return room.take(fileBytes + picture->preparedBytes(use)) ? picture : nullptr;
}

} // namespace

Pictures::Pictures(PictureObserver& observer, PictureLimits limits)
    : observer_(observer), limits_(limits), cache_(std::make_shared<PictureCache>()),
      ahead_(std::make_unique<PicturesAhead>([cache = cache_, limits](const std::string& path,
                                                                      ImageUse use,
                                                                      PicturesAhead::Room& room) {
          return loadAhead(*cache, limits, path, use, room);
      })) {}

Pictures::~Pictures() = default;

std::shared_ptr<NSImage> Pictures::imageWithContentsOfFile(const std::string& path) const {
    const auto load = [&](OpenFile& file) -> PictureSourceResult {
        PictureSourceResult picture = readPicture(file, path, limits_);
        if (const auto source = sourceOf(picture); source && !source->flaw().empty()) {
            reportFlaw(*source);
        }
        return picture;
    };
    const auto loadNew = [&](OpenFile& file) -> PictureSourceResult {
        auto still = lastStill();
        return still && file.holds(still->encodedAhead()->bytes()) ? std::move(still) : load(file);
    };
    auto opened = OpenFile::at(path, limits_.largestFile);
    auto* const file = std::get_if<OpenFile>(&opened);
    const auto result = file == nullptr ? PictureSourceResult(std::get<NSError>(opened))
                        : file->state().isSettled()
                            ? cache_->picture(path, file->state(), [&] { return load(*file); })
                            : loadNew(*file);
    if (const auto* error = std::get_if<NSError>(&result)) {
        observer_.imageCouldNotBeRead(path, *error);
        return nullptr;
    }
    return std::make_shared<MediaImage>(sourceOf(result));
}

void Pictures::expectImages(std::shared_ptr<const std::vector<std::string>> paths,
                            std::size_t first, ImageUse use) const {
    ahead_->expect(std::move(paths), first, use);
}

std::shared_ptr<const PictureSource> Pictures::lastStill() const {
    const std::lock_guard lock(stillMutex_);
    return lastStill_.lock();
}

void Pictures::reportFlaw(const PictureSource& picture) const {
    {
        const std::lock_guard lock(flawsMutex_);
        if (!reportedFlaws_.insert(picture.name()).second) {
            return;
        }
    }
    observer_.imageHasFlaw(pictureError(PictureFault::Damaged, picture.name(),
                                        "was read although it is damaged (" + picture.flaw() +
                                            "): its pixels are whole"));
}

std::shared_ptr<NSImage> Pictures::imageWithData(const std::shared_ptr<NSData>& data) const {
    if (!data) {
        return nullptr;
    }
    const auto result = pictureFromData(data, limits_);
    if (const auto* error = std::get_if<NSError>(&result)) {
        observer_.imageCouldNotBeRead("", *error);
        return nullptr;
    }
    return std::make_shared<MediaImage>(sourceOf(result));
}

std::shared_ptr<NSBitmapImageRep>
Pictures::imageRepWithData(const std::shared_ptr<NSData>& data) const {
    auto source = data ? sourceOf(pictureFromData(data, limits_)) : nullptr;
    if (source && source->encodedAhead()) {
        const std::lock_guard lock(stillMutex_);
        lastStill_ = source;
    }
    return source ? std::make_shared<MediaBitmapImageRep>(std::move(source), observer_) : nullptr;
}

std::shared_ptr<NSGraphicsContext> Pictures::graphicsContextWithCGContext(CGContextRef context,
                                                                          bool flipped) const {
    return context != nullptr ? std::make_shared<MediaGraphicsContext>(
                                    static_cast<BitmapContext*>(context), flipped)
                              : nullptr;
}

void Pictures::saveGraphicsState() const {
    pushGraphicsContext();
}

void Pictures::setCurrentContext(std::shared_ptr<NSGraphicsContext> context) const {
    setCurrentGraphicsContext(std::move(context));
}

void Pictures::restoreGraphicsState() const {
    popGraphicsContext();
}

} // namespace vistrane
