#include "backends/sim/SimUserDefaults.h"

#include "platform/foundation/NSString.h"

namespace vistrane {

NSInteger SimUserDefaults::integerForKey(const std::string& key) const {
    mainCall("integerForKey: " + key);
    if (const auto* value = find<NSInteger>(key)) {
        return *value;
    }
    const auto* text = find<std::string>(key);
    return text ? integerValue(*text) : 0;
}

void SimUserDefaults::setInteger(NSInteger value, const std::string& key) {
    mainCall("setInteger: " + std::to_string(value) + " forKey: " + key);
    values[key] = value;
}

std::optional<std::string> SimUserDefaults::stringForKey(const std::string& key) const {
    mainCall("stringForKey: " + key);
    const auto* value = find<std::string>(key);
    return value ? std::optional(*value) : std::nullopt;
}

std::optional<std::vector<std::uint8_t>>
SimUserDefaults::objectForKey(const std::string& key) const {
    mainCall("objectForKey: " + key);
    const auto* value = find<std::vector<std::uint8_t>>(key);
    return value ? std::optional(*value) : std::nullopt;
}

void SimUserDefaults::setObject(const std::vector<std::uint8_t>& value, const std::string& key) {
    mainCall("setObject: " + std::string(value.begin(), value.end()) + " forKey: " + key);
    values[key] = value;
}

void SimUserDefaults::synchronize() {
    mainCall("synchronize");
    durableValues = values;
}

template <class T>
const T* SimUserDefaults::find(const std::string& key) const {
    const auto found = values.find(key);
    return found == values.end() ? nullptr : std::get_if<T>(&found->second);
}

} // namespace vistrane
