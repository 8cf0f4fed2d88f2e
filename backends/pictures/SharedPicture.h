#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "backends/pictures/PictureSource.h"

namespace vistrane {

/// The state that all users of a picture share. While one of them decodes it, the smaller picture
/// that a view has requested is made from the same rows. Any thread.
class SharedDecoding {
public:
    explicit SharedDecoding(std::shared_ptr<const PictureSource> picture)
        : picture_(std::move(picture)) {}

    const PictureSource& picture() const { return *picture_; }

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

    const std::shared_ptr<const PictureSource> picture_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::size_t unread_ = 0;
    std::size_t decoding_ = 0;
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

    const SharedDecoding& decoding() const { return *decoding_; }

private:
    void markRead() const;

    std::shared_ptr<SharedDecoding> decoding_;
    mutable std::atomic<bool> isUnread_{true};
};

} // namespace vistrane
