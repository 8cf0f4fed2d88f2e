#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "backends/pictures/PictureSource.h"

namespace vistrane {

/// Converts pixels from an embedded colour profile to sRGB. One thread at a time.
class ProfileConversion {
public:
    /// `chunk` is the data of an iCCP chunk. `grey`: the picture has only grey values. Null if no
    /// conversion is needed or possible: the profile is sRGB (no component changes by more than one
    /// step), damaged, or for a different colour model than the picture's.
    static std::optional<ProfileConversion> fromChunk(std::span<const std::uint8_t> chunk,
                                                      bool grey, PixelForm form);

    /// Converts `count` pixels in place, of the form given to `fromChunk`. Keeps alpha.
    void convert(std::uint8_t* pixels, std::size_t count) const;

private:
    struct Tables;
    explicit ProfileConversion(std::shared_ptr<const Tables> tables);

    std::shared_ptr<const Tables> tables_;
};

} // namespace vistrane
