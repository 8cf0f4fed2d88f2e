#include "backends/pictures/DataBytes.h"

#include <utility>

#include "backends/pictures/file_bytes.h"

namespace vistrane {

DataBytes::DataBytes(ByteArray bytes, PictureObserver* observer)
    : DataBytes(std::make_shared<const ByteArray>(std::move(bytes)), observer) {}

DataBytes::DataBytes(std::shared_ptr<const ByteArray> bytes, PictureObserver* observer)
    : bytes_(std::move(bytes)), observer_(observer) {}

std::shared_ptr<DataBytes> DataBytes::copyOf(std::span<const std::uint8_t> bytes,
                                             PictureObserver* observer) {
    auto copy = ByteArray::copyOf(bytes);
    return copy ? std::make_shared<DataBytes>(std::move(*copy), observer) : nullptr;
}

const std::uint8_t* DataBytes::bytes() const {
    return bytes_->data();
}

std::size_t DataBytes::length() const {
    return bytes_->length();
}

bool DataBytes::writeToFile(const std::string& path, bool) const {
    if (observer_ != nullptr) {
        observer_->fileIsBeingWritten(path);
    }
    const auto error = writeFileInPlace(path, bytes_->bytes());
    if (observer_ != nullptr && error) {
        observer_->fileCouldNotBeWritten(path, *error);
    } else if (observer_ != nullptr) {
        observer_->fileWasWritten(path);
    }
    return !error;
}

} // namespace vistrane
