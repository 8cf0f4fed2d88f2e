#pragma once

#include <map>
#include <string>
#include <variant>
#include <vector>

#include "platform/foundation/NSUserDefaults.h"

namespace vistrane {

/// Settings in memory, for one run. Initially empty; a front end stores what the program should
/// find.
class MemoryUserDefaults final : public NSUserDefaults {
public:
    NSInteger integerForKey(const std::string& key) const override;
    void setInteger(NSInteger value, const std::string& key) override;
    std::optional<std::string> stringForKey(const std::string& key) const override;
    std::optional<std::vector<std::uint8_t>> objectForKey(const std::string& key) const override;
    void setObject(const std::vector<std::uint8_t>& value, const std::string& key) override;
    void synchronize() override {}

    /// Stores a key that belongs to the system.
    void setString(const std::string& value, const std::string& key);

private:
    using Value = std::variant<NSInteger, std::string, std::vector<std::uint8_t>>;

    template <typename Type>
    const Type* find(const std::string& key) const;

    std::map<std::string, Value> values_;
};

} // namespace vistrane
