#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "backends/pictures/PictureSource.h"
#include "platform/appkit/ImageUse.h"

namespace vistrane {

/// The size in which a view last wanted a picture. Any thread.
class ViewSize {
public:
    struct Size {
        std::size_t width = 0;
        std::size_t height = 0;
    };

    void set(const PictureShape& shape, Size size) {
        const std::lock_guard lock(mutex_);
        shape_ = shape;
        size_ = size;
    }
    /// Nothing if the last picture had another shape, because a view keeps a picture's proportions.
    std::optional<Size> of(const PictureShape& shape) const {
        const std::lock_guard lock(mutex_);
        return shape == shape_ ? size_ : std::nullopt;
    }

private:
    mutable std::mutex mutex_;
    PictureShape shape_;
    std::optional<Size> size_;
};

/// The state that all users of a picture share. While one of them decodes it, the smaller picture
/// that a view has requested is made from the same rows. Any thread.
class SharedDecoding {
public:
    /// Tells `viewSize`, if there is one, in which size the picture is wanted.
    explicit SharedDecoding(std::shared_ptr<const PictureSource> picture,
                            std::shared_ptr<ViewSize> viewSize = nullptr)
        : shape_(picture->shape()), name_(picture->name()), viewSize_(std::move(viewSize)),
          picture_(std::move(picture)) {}

    const PictureShape& shape() const { return shape_; }
    const std::string& name() const { return name_; }

    /// The picture in its present form. Waits while it is decoded for a movie.
    std::shared_ptr<const PictureSource> picture();

    /// Decodes for that use what later calls then take from memory: for a movie all pixels, which
    /// replace the bytes of the file; for a view the smaller picture, if its size is known. Returns
    /// false, and changes nothing, if that fails.
    bool prepare(ImageUse use);
    /// The memory that this takes, in bytes.
    std::size_t preparedBytes(ImageUse use) const;

    /// Count the users that have loaded the picture but not read it yet.
    void join();
    void leave();

    std::optional<NSError> readPixels(PixelForm form, std::uint8_t* rows, std::ptrdiff_t stride);
    std::optional<NSError> readSmaller(std::size_t width, std::size_t height, std::uint32_t* pixels,
                                       std::ptrdiff_t stride);
    void expectSmaller(std::size_t width, std::size_t height);

private:
    class Turn;
    struct Smaller {
        std::size_t width = 0;
        std::size_t height = 0;
        /// Contiguous rows; empty until the picture is made.
        std::vector<std::uint32_t> pixels;
        bool hasSize(std::size_t w, std::size_t h) const { return width == w && height == h; }
    };

    bool isMade(std::size_t width, std::size_t height) const;
    bool takeSmaller(std::size_t width, std::size_t height, std::uint32_t* pixels,
                     std::ptrdiff_t stride);
    void makeSmaller(PixelForm form, const std::uint8_t* rows, std::ptrdiff_t stride);
    bool keepPixels();
    bool keepSmaller();

    const PictureShape shape_;
    const std::string name_;
    const std::shared_ptr<ViewSize> viewSize_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::shared_ptr<const PictureSource> picture_;
    std::size_t unread_ = 0;
    std::size_t decoding_ = 0;
    bool isKeepingPixels_ = false;
    /// The last size that a view requested.
    std::optional<Smaller> smaller_;
};

/// One user's picture.
class SharedPicture final : public PictureSource {
public:
    explicit SharedPicture(std::shared_ptr<SharedDecoding> decoding);
    ~SharedPicture() override;

    std::optional<NSError> readPixels(PixelForm form, std::uint8_t* rows,
                                      std::ptrdiff_t stride) const override;
    std::optional<NSError> passRows(PixelForm form, PictureRows& rows) const override;
    std::optional<NSError> readSmaller(std::size_t width, std::size_t height, std::uint32_t* pixels,
                                       std::ptrdiff_t stride) const override;
    void expectSmaller(std::size_t width, std::size_t height) const override;

    /// Prepares the picture for other users, instead of reading it. See `SharedDecoding`.
    bool prepare(ImageUse use) const;
    std::size_t preparedBytes(ImageUse use) const { return decoding_->preparedBytes(use); }

    const SharedDecoding& decoding() const { return *decoding_; }

private:
    void markRead() const;

    std::shared_ptr<SharedDecoding> decoding_;
    mutable std::atomic<bool> isUnread_{true};
};

} // namespace vistrane
