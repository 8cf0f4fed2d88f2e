#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "backends/posix/settings_text.h"
#include "platform/foundation/NSUserDefaults.h"

namespace vistrane {

/// The settings in one file, read once; `synchronize` saves what was set since then.
///
/// Several instances of the program may share the file: each saves the keys that it set and
/// leaves the others as they are in the file by then. What another instance saves is seen at the
/// next start only.
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
    /// May wait half a second for another instance. The log tells when the values could not be
    /// written.
    void synchronize() override;

    /// From now on the text of `key` is asked of the system, whatever the file says.
    void setSystemString(const std::string& key,
                         std::function<std::optional<std::string>()> answer);

private:
    template <typename Type>
    const Type* find(const std::string& key) const;
    void read();
    /// `remedy` is what the program does without the file.
    void setAside(const std::string& reason, const std::string& remedy);
    /// False, with the reason in `errno`, when the file still holds what it held.
    bool save();
    /// What a file of this text is to hold.
    Settings withChanges(const std::string& text);

    const std::string path_;
    const Log log_;
    Settings values_;
    std::map<std::string, std::function<std::optional<std::string>()>> systemStrings_;
    /// The keys that were set since the last save.
    std::set<std::string> changed_;
    /// Why the last save failed: it is said once. Empty after one that did not.
    std::string reported_;
    /// A file that is there and cannot be read may hold what is not to be lost.
    bool isReadable_ = true;
};

/// Where the program's settings are kept. Absolute.
std::string settingsPath();

} // namespace vistrane
