#include "backends/pictures/SharedPicture.h"

#include <algorithm>
#include <chrono>
#include <new>

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
    explicit Turn(SharedDecoding& decoding) : decoding_(decoding) {
        const std::lock_guard lock(decoding_.mutex_);
        ++decoding_.decoding_;
    }
    ~Turn() {
        const std::lock_guard lock(decoding_.mutex_);
        --decoding_.decoding_;
        decoding_.changed_.notify_all();
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

private:
    SharedDecoding& decoding_;
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
    const Turn turn(*this);
    auto error = picture_->readPixels(form, rows, stride);
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
    Downscaling smaller(picture_->shape(), form, wanted.width, wanted.height, wanted.pixels.data(),
                        static_cast<std::ptrdiff_t>(4 * wanted.width));
    smaller.begin();
    for (std::uint32_t y = 0; y < picture_->shape().height; ++y) {
        smaller.take(rows + static_cast<std::ptrdiff_t>(y) * stride);
    }
    const std::lock_guard lock(mutex_);
    if (smaller_ && smaller_->hasSize(wanted.width, wanted.height)) {
        smaller_ = std::move(wanted);
    }
}

void SharedDecoding::expectSmaller(std::size_t width, std::size_t height) {
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
               : picture_->readSmaller(width, height, pixels, stride);
}

SharedPicture::SharedPicture(std::shared_ptr<SharedDecoding> decoding)
    : PictureSource(decoding->picture().shape(), decoding->picture().name()),
      decoding_(std::move(decoding)) {
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
    return decoding_->picture().passRows(form, rows);
}

std::optional<NSError> SharedPicture::readSmaller(std::size_t width, std::size_t height,
                                                  std::uint32_t* pixels,
                                                  std::ptrdiff_t stride) const {
    markRead();
    return decoding_->readSmaller(width, height, pixels, stride);
}

void SharedPicture::expectSmaller(std::size_t width, std::size_t height) const {
    decoding_->expectSmaller(width, height);
}

} // namespace vistrane
