#include "backends/pictures/PictureData.h"

#include <utility>

#include "backends/pictures/file_bytes.h"
#include "backends/pictures/png_encoding.h"

namespace vistrane {

PictureData::PictureData(std::shared_ptr<const PictureSource> picture)
    : picture_(std::move(picture)) {}

const std::uint8_t* PictureData::bytes() const {
    return file().data();
}

std::size_t PictureData::length() const {
    return file().length();
}

bool PictureData::writeToFile(const std::string& path, bool) const {
    return length() > 0 && !writeFileInPlace(path, file().bytes());
}

const ByteArray& PictureData::file() const {
    std::call_once(isEncoded_, [this] {
        file_ = pngFileOf(*picture_);
        if (!file_) {
            file_ = std::make_shared<const ByteArray>();
        }
    });
    return *file_;
}

} // namespace vistrane
