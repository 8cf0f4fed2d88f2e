#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "backends/pictures/PictureSource.h"

namespace vistrane {

/// Turns pixels with an embedded colour profile into sRGB. One thread at a time.
class ProfileConversion {
public:
    /// `chunk` is the data of an iCCP chunk. Nothing where no conversion is needed: the profile is
    /// sRGB (no component changes by more than one step), or it is broken, or it is for another
    /// kind of colour than the picture's. `grey` says that the picture has grey values only.
    static std::optional<ProfileConversion> fromChunk(std::span<const std::uint8_t> chunk,
                                                      bool grey, PixelForm form);

    /// Converts `count` pixels of the form given to `fromChunk` in place; alpha stays.
    void convert(std::uint8_t* pixels, std::size_t count) const;

private:
    struct Tables;
    explicit ProfileConversion(std::shared_ptr<const Tables> tables);

    std::shared_ptr<const Tables> tables_;
};

} // namespace vistrane
