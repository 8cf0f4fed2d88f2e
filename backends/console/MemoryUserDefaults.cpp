#include "backends/console/MemoryUserDefaults.h"

#include "platform/foundation/NSString.h"

namespace vistrane {

template <typename Type>
const Type* MemoryUserDefaults::find(const std::string& key) const {
    const auto entry = values_.find(key);
    return entry == values_.end() ? nullptr : std::get_if<Type>(&entry->second);
}

NSInteger MemoryUserDefaults::integerForKey(const std::string& key) const {
    if (const NSInteger* value = find<NSInteger>(key)) {
        return *value;
    }
    const auto* text = find<std::string>(key);
    return text == nullptr ? 0 : integerValue(*text);
}

void MemoryUserDefaults::setInteger(NSInteger value, const std::string& key) {
    values_[key] = value;
}

std::optional<std::string> MemoryUserDefaults::stringForKey(const std::string& key) const {
    const std::string* value = find<std::string>(key);
    return value == nullptr ? std::nullopt : std::optional(*value);
}

std::optional<std::vector<std::uint8_t>>
MemoryUserDefaults::objectForKey(const std::string& key) const {
    const auto* value = find<std::vector<std::uint8_t>>(key);
    return value == nullptr ? std::nullopt : std::optional(*value);
}

void MemoryUserDefaults::setObject(const std::vector<std::uint8_t>& value, const std::string& key) {
    values_[key] = value;
}

void MemoryUserDefaults::setString(const std::string& value, const std::string& key) {
    values_[key] = value;
}

} // namespace vistrane
