#pragma once

#include <map>
#include <variant>

#include "backends/sim/CallLog.h"
#include "platform/foundation/NSUserDefaults.h"

namespace vistrane {

/// The settings in memory. What a test reads and writes itself is not recorded.
class SimUserDefaults final : public NSUserDefaults, public SimObject {
public:
    using Value = std::variant<NSInteger, std::string, std::vector<std::uint8_t>>;
    using Values = std::map<std::string, Value>;

    explicit SimUserDefaults(CallLog& log) : SimObject(log, "standardUserDefaults") {}

    NSInteger integerForKey(const std::string& key) const override;
    void setInteger(NSInteger value, const std::string& key) override;
    std::optional<std::string> stringForKey(const std::string& key) const override;
    std::optional<std::vector<std::uint8_t>> objectForKey(const std::string& key) const override;
    void setObject(const std::vector<std::uint8_t>& value, const std::string& key) override;
    void synchronize() override;

    Values values;
    /// The values as they were synchronised last.
    Values durableValues;
    /// Another start of the program: what was not synchronised is gone.
    void reopen() { values = durableValues; }

private:
    template <class T>
    const T* find(const std::string& key) const;
};

} // namespace vistrane
