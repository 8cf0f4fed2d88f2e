#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/NSUserDefaults.h"
#include "platform/posix/settings_text.h"

namespace vistrane {

/// The settings in one file, read once and written whole by `synchronize`.
///
/// A file that cannot be understood is set aside beside its place, with ".damaged" behind its name,
/// and the settings begin empty. A file or folder that cannot be read or written costs a log line
/// and no more: the settings then last as long as the process.
class FileUserDefaults final : public NSUserDefaults {
public:
    using Log = std::function<void(const std::string& line)>;

    /// `path` is absolute; its folder is made when the first value is written.
    FileUserDefaults(std::string path, Log log);

    NSInteger integerForKey(const std::string& key) const override;
    void setInteger(NSInteger value, const std::string& key) override;
    std::optional<std::string> stringForKey(const std::string& key) const override;
    std::optional<std::vector<std::uint8_t>> objectForKey(const std::string& key) const override;
    void setObject(const std::vector<std::uint8_t>& value, const std::string& key) override;
    /// The log tells when the values could not be written.
    void synchronize() override;

    /// From now on the text of `key` is asked of the system, whatever the file says.
    void setSystemString(const std::string& key,
                         std::function<std::optional<std::string>()> answer);

private:
    template <typename Type>
    const Type* find(const std::string& key) const;
    void read();
    void setAside(const std::string& reason);

    const std::string path_;
    const Log log_;
    Settings values_;
    std::map<std::string, std::function<std::optional<std::string>()>> systemStrings_;
    /// Whether the file holds something else than `values_`.
    bool isChanged_ = false;
    /// A file that is there and cannot be read may hold what is not to be lost.
    bool isReadable_ = true;
};

/// Where the program's settings are kept. Absolute.
std::string settingsPath();

} // namespace vistrane
