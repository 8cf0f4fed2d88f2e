#include "backends/pictures/SharedPicture.h"

#include <algorithm>
#include <chrono>
#include <new>
#include <variant>

#include "backends/pictures/DecodedPicture.h"
#include "backends/pictures/Downscaling.h"

namespace vistrane {

namespace {

/// How long a view waits for another user to start decoding before it decodes the picture itself.
/// The other user usually starts within microseconds.
constexpr std::chrono::milliseconds decodingTimeout(20);

} // namespace

/// The scope of a decoding. Its end, even by an exception, wakes the threads that wait for it.
class SharedDecoding::Turn {
public:
    explicit Turn(SharedDecoding& decoding, bool isKeepingPixels = false)
        : decoding_(decoding), isKeepingPixels_(isKeepingPixels) {
        const std::lock_guard lock(decoding_.mutex_);
        ++decoding_.decoding_;
        decoding_.isKeepingPixels_ |= isKeepingPixels;
    }
    ~Turn() {
        const std::lock_guard lock(decoding_.mutex_);
        --decoding_.decoding_;
        if (isKeepingPixels_) {
            decoding_.isKeepingPixels_ = false;
        }
        decoding_.changed_.notify_all();
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

private:
    SharedDecoding& decoding_;
    const bool isKeepingPixels_;
};

void SharedDecoding::join() {
    const std::lock_guard lock(mutex_);
    ++unread_;
}

void SharedDecoding::leave() {
    const std::lock_guard lock(mutex_);
    --unread_;
    changed_.notify_all();
}

std::optional<NSError> SharedDecoding::readPixels(PixelForm form, std::uint8_t* rows,
                                                  std::ptrdiff_t stride) {
    const auto source = picture();
    const Turn turn(*this);
    auto error = source->readPixels(form, rows, stride);
    if (error) {
        return error;
    }
    try {
        makeSmaller(form, rows, stride);
    } catch (const std::bad_alloc&) {
        // This caller has its pixels. The view will decode the picture itself.
        return std::nullopt;
    }
    return std::nullopt;
}

void SharedDecoding::makeSmaller(PixelForm form, const std::uint8_t* rows, std::ptrdiff_t stride) {
    Smaller wanted;
    {
        const std::lock_guard lock(mutex_);
        if (!smaller_ || !smaller_->pixels.empty()) {
            return;
        }
        wanted = *smaller_;
    }
    wanted.pixels.resize(wanted.width * wanted.height);
    Downscaling smaller(shape_, form, wanted.width, wanted.height, wanted.pixels.data(),
                        static_cast<std::ptrdiff_t>(4 * wanted.width));
    smaller.begin();
    for (std::uint32_t y = 0; y < shape_.height; ++y) {
        smaller.take(rows + static_cast<std::ptrdiff_t>(y) * stride);
    }
    const std::lock_guard lock(mutex_);
    if (smaller_ && smaller_->hasSize(wanted.width, wanted.height)) {
        smaller_ = std::move(wanted);
    }
}

std::shared_ptr<const PictureSource> SharedDecoding::picture() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return !isKeepingPixels_; });
    return picture_;
}

bool SharedDecoding::prepare(ImageUse use) {
    return use == ImageUse::Movie ? keepPixels() : keepSmaller();
}

std::size_t SharedDecoding::preparedBytes(ImageUse use) const {
    if (use == ImageUse::Movie) {
        return bytesPerPixel(shape_.compactForm()) * shape_.width * shape_.height;
    }
    const auto size = viewSize_ ? viewSize_->of(shape_) : std::nullopt;
    return size ? sizeof(std::uint32_t) * size->width * size->height : 0;
}

bool SharedDecoding::keepPixels() {
    const auto source = picture();
    const Turn turn(*this, true);
    auto decoded = decodedPicture(source);
    auto* const pixels = std::get_if<std::shared_ptr<const PictureSource>>(&decoded);
    if (pixels == nullptr) {
        return false;
    }
    const std::lock_guard lock(mutex_);
    picture_ = std::move(*pixels);
    return true;
}

bool SharedDecoding::keepSmaller() {
    const auto size = viewSize_ ? viewSize_->of(shape_) : std::nullopt;
    if (!size) {
        return true;
    }
    const auto source = picture();
    const Turn turn(*this);
    Smaller made{size->width, size->height, {}};
    made.pixels.resize(size->width * size->height);
    if (source->readSmaller(size->width, size->height, made.pixels.data(),
                            static_cast<std::ptrdiff_t>(4 * size->width))) {
        return false;
    }
    const std::lock_guard lock(mutex_);
    if (!smaller_ || smaller_->hasSize(size->width, size->height)) {
        smaller_ = std::move(made);
    }
    return true;
}

void SharedDecoding::expectSmaller(std::size_t width, std::size_t height) {
    if (viewSize_) {
        viewSize_->set(shape_, {width, height});
    }
    const std::lock_guard lock(mutex_);
    if (!smaller_ || !smaller_->hasSize(width, height)) {
        smaller_ = Smaller{width, height, {}};
    }
}

bool SharedDecoding::isMade(std::size_t width, std::size_t height) const {
    return smaller_ && smaller_->hasSize(width, height) && !smaller_->pixels.empty();
}

bool SharedDecoding::takeSmaller(std::size_t width, std::size_t height, std::uint32_t* pixels,
                                 std::ptrdiff_t stride) {
    const auto isMade = [&] { return this->isMade(width, height); };
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, decodingTimeout,
                      [&] { return isMade() || decoding_ > 0 || unread_ == 0; });
    changed_.wait(lock, [&] { return isMade() || decoding_ == 0; });
    const bool made = isMade();
    for (std::size_t y = 0; made && y < height; ++y) {
        auto* const row = reinterpret_cast<std::uint8_t*>(pixels) + std::ptrdiff_t(y) * stride;
        std::copy_n(smaller_->pixels.data() + y * width, width,
                    reinterpret_cast<std::uint32_t*>(row));
    }
    // The view has the smaller picture now, or will make it itself.
    smaller_.reset();
    return made;
}

std::optional<NSError> SharedDecoding::readSmaller(std::size_t width, std::size_t height,
                                                   std::uint32_t* pixels, std::ptrdiff_t stride) {
    expectSmaller(width, height);
    return takeSmaller(width, height, pixels, stride)
               ? std::nullopt
               : picture()->readSmaller(width, height, pixels, stride);
}

SharedPicture::SharedPicture(std::shared_ptr<SharedDecoding> decoding)
    : PictureSource(decoding->shape(), decoding->name()), decoding_(std::move(decoding)) {
    decoding_->join();
}

SharedPicture::~SharedPicture() {
    markRead();
}

void SharedPicture::markRead() const {
    if (isUnread_.exchange(false)) {
        decoding_->leave();
    }
}

std::optional<NSError> SharedPicture::readPixels(PixelForm form, std::uint8_t* rows,
                                                 std::ptrdiff_t stride) const {
    auto error = decoding_->readPixels(form, rows, stride);
    markRead();
    return error;
}

std::optional<NSError> SharedPicture::passRows(PixelForm form, PictureRows& rows) const {
    markRead();
    return decoding_->picture()->passRows(form, rows);
}

std::optional<NSError> SharedPicture::readSmaller(std::size_t width, std::size_t height,
                                                  std::uint32_t* pixels,
                                                  std::ptrdiff_t stride) const {
    markRead();
    return decoding_->readSmaller(width, height, pixels, stride);
}

bool SharedPicture::prepare(ImageUse use) const {
    const bool isPrepared = decoding_->prepare(use);
    markRead();
    return isPrepared;
}

void SharedPicture::expectSmaller(std::size_t width, std::size_t height) const {
    decoding_->expectSmaller(width, height);
}

} // namespace vistrane
