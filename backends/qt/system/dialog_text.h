#pragma once

#include <string>

#include <QString>

namespace vistrane {

/// Bytes as they are shown: what is not valid UTF-8 becomes the replacement character.
inline QString dialogText(const std::string& bytes) {
    return QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

} // namespace vistrane
