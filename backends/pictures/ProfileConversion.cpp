#include "backends/pictures/ProfileConversion.h"

#include <lcms2.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>

#include "backends/pictures/ByteArray.h"

namespace vistrane {

namespace {

/// Profiles of cameras and screens have a few kilobytes, those with large tables up to two
/// megabytes.
constexpr std::size_t largestProfile = std::size_t{8} << 20;
/// The length of a profile's header.
constexpr std::size_t smallestProfile = 128;

struct Close {
    void operator()(cmsContext context) const { cmsDeleteContext(context); }
};
using Context = std::unique_ptr<std::remove_pointer_t<cmsContext>, Close>;

struct CloseProfile {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, CloseProfile>;

struct CloseTransform {
    void operator()(void* transform) const { cmsDeleteTransform(transform); }
};
using Transform = std::unique_ptr<void, CloseTransform>;

std::optional<ByteArray> inflated(std::span<const std::uint8_t> data) {
    ByteArray result;
    std::array<std::uint8_t, 16384> part{};
    z_stream stream{};
    stream.next_in = const_cast<Bytef*>(data.data());
    stream.avail_in = static_cast<uInt>(data.size());
    if (inflateInit(&stream) != Z_OK) {
        return std::nullopt;
    }
    int state = Z_OK;
    bool fits = true;
    while (state == Z_OK && fits) {
        stream.next_out = part.data();
        stream.avail_out = static_cast<uInt>(part.size());
        state = inflate(&stream, Z_NO_FLUSH);
        fits = result.append({part.data(), part.size() - stream.avail_out}) &&
               result.length() <= largestProfile;
    }
    inflateEnd(&stream);
    return state == Z_STREAM_END && fits ? std::optional(std::move(result)) : std::nullopt;
}

/// The chunk holds a name of 1 to 79 bytes, a zero, the method 0 (deflate), and the profile.
std::optional<ByteArray> profileBytes(std::span<const std::uint8_t> chunk) {
    const auto nameEnd = std::find(chunk.begin(), chunk.end(), std::uint8_t{0});
    const auto nameLength = static_cast<std::size_t>(nameEnd - chunk.begin());
    if (nameLength > 79 || chunk.size() - nameLength < 3 || chunk[nameLength + 1] != 0) {
        return std::nullopt;
    }
    auto bytes = inflated(chunk.subspan(nameLength + 2));
    return bytes && bytes->length() >= smallestProfile ? std::move(bytes) : std::nullopt;
}

cmsUInt32Number pixelType(PixelForm form) {
    switch (form) {
    case PixelForm::ARGB:
        return TYPE_ARGB_8;
    case PixelForm::RGBA:
        return TYPE_RGBA_8;
    case PixelForm::RGB:
        break;
    }
    return TYPE_RGB_8;
}

Transform makeTransform(cmsContext context, const Profile& from, cmsUInt32Number fromType,
                        cmsUInt32Number toType, cmsUInt32Number flags = 0) {
    const Profile to(cmsCreate_sRGBProfileTHR(context));
    if (!to) {
        return nullptr;
    }
    // Relative colorimetric keeps the colours that both spaces have. A cache does not help with
    // pictures.
    return Transform(cmsCreateTransformTHR(
        context, from.get(), fromType, to.get(), toType, INTENT_RELATIVE_COLORIMETRIC,
        cmsFLAGS_BLACKPOINTCOMPENSATION | cmsFLAGS_NOCACHE | flags));
}

bool isSame(std::uint8_t first, std::uint8_t second) {
    return std::abs(first - second) <= 1;
}

} // namespace

struct ProfileConversion::Tables {
    PixelForm form = PixelForm::RGB;
    // Declared in this order, because the transform must be destroyed before its context.
    Context context;
    Transform transform;
    /// For a grey profile: the sRGB colour of each value.
    std::optional<std::array<std::uint8_t, 768>> greys;

    bool changesAGrey() const {
        for (std::size_t i = 0; i < greys->size(); ++i) {
            if (!isSame((*greys)[i], static_cast<std::uint8_t>(i / 3))) {
                return true;
            }
        }
        return false;
    }

    bool changesAColour(const Profile& profile) const {
        const Transform plain = makeTransform(context.get(), profile, TYPE_RGB_8, TYPE_RGB_8);
        // 9 values of each component, including 0 and 255.
        constexpr int steps = 9;
        for (int i = 0; plain && i < steps * steps * steps; ++i) {
            const auto step = [](int n) {
                return static_cast<std::uint8_t>(n % steps * 255 / (steps - 1));
            };
            const std::array<std::uint8_t, 3> from = {step(i), step(i / steps),
                                                      step(i / steps / steps)};
            std::array<std::uint8_t, 3> to{};
            cmsDoTransform(plain.get(), from.data(), to.data(), 1);
            if (!std::equal(from.begin(), from.end(), to.begin(), isSame)) {
                return true;
            }
        }
        return false;
    }
};

ProfileConversion::ProfileConversion(std::shared_ptr<const Tables> tables)
    : tables_(std::move(tables)) {}

std::optional<ProfileConversion> ProfileConversion::fromChunk(std::span<const std::uint8_t> chunk,
                                                              bool grey, PixelForm form) {
    const auto bytes = profileBytes(chunk);
    auto tables = std::make_shared<Tables>();
    tables->form = form;
    // A private context, because all threads share the default one.
    tables->context.reset(cmsCreateContext(nullptr, nullptr));
    if (!bytes || !tables->context) {
        return std::nullopt;
    }
    const Profile profile(cmsOpenProfileFromMemTHR(tables->context.get(), bytes->data(),
                                                   static_cast<cmsUInt32Number>(bytes->length())));
    if (!profile || cmsGetColorSpace(profile.get()) != (grey ? cmsSigGrayData : cmsSigRgbData)) {
        return std::nullopt;
    }
    if (grey) {
        // The optimised transform is less exact in dark colours, and not faster for 256 values.
        const Transform transform = makeTransform(tables->context.get(), profile, TYPE_GRAY_8,
                                                  TYPE_RGB_8, cmsFLAGS_NOOPTIMIZE);
        if (!transform) {
            return std::nullopt;
        }
        std::array<std::uint8_t, 256> values{};
        for (std::size_t i = 0; i < values.size(); ++i) {
            values[i] = static_cast<std::uint8_t>(i);
        }
        cmsDoTransform(transform.get(), values.data(), tables->greys.emplace().data(),
                       static_cast<cmsUInt32Number>(values.size()));
        return tables->changesAGrey() ? std::optional(ProfileConversion(std::move(tables)))
                                      : std::nullopt;
    }
    tables->transform =
        makeTransform(tables->context.get(), profile, pixelType(form), pixelType(form));
    if (!tables->transform || !tables->changesAColour(profile)) {
        return std::nullopt;
    }
    return ProfileConversion(std::move(tables));
}

void ProfileConversion::convert(std::uint8_t* pixels, std::size_t count) const {
    if (!tables_->greys) {
        // Converting in place, the library leaves alpha unchanged.
        cmsDoTransform(tables_->transform.get(), pixels, pixels,
                       static_cast<cmsUInt32Number>(count));
        return;
    }
    std::uint8_t* colour = pixels + (tables_->form == PixelForm::ARGB ? 1 : 0);
    for (std::size_t i = 0; i < count; ++i, colour += bytesPerPixel(tables_->form)) {
        std::copy_n(tables_->greys->begin() + 3 * std::ptrdiff_t{colour[0]}, 3, colour);
    }
}

} // namespace vistrane
