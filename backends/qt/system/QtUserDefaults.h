#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <QVariant>

#include "platform/foundation/NSUserDefaults.h"

namespace vistrane {

/// The settings in one INI file, read once; `synchronize` saves what was set since then.
///
/// Several instances of the program may share the file: each saves the keys that it set and leaves
/// the others as they are in the file by then. What another instance saves is seen at the next
/// start only.
///
/// A value that cannot be read counts as absent. A file that is no list of settings is set aside
/// as "NAME.damaged", or "NAME.damaged-2" and so on when that name is taken, and the settings begin
/// empty. A file or folder that cannot be read or written costs a log line and no more: the
/// settings then last as long as the process.
///
/// INI does not tell a number from a text of digits: `stringForKey` returns a number as its digits.
class QtUserDefaults final : public NSUserDefaults {
public:
    using Log = std::function<void(const std::string& line)>;

    /// `path` is absolute; its folder is made when the first value is written.
    QtUserDefaults(std::string path, Log log);

    NSInteger integerForKey(const std::string& key) const override;
    void setInteger(NSInteger value, const std::string& key) override;
    std::optional<std::string> stringForKey(const std::string& key) const override;
    std::optional<std::vector<std::uint8_t>> objectForKey(const std::string& key) const override;
    void setObject(const std::vector<std::uint8_t>& value, const std::string& key) override;
    /// Waits while another instance saves, for half a second at most: it may have been stopped. A
    /// lock that a crashed instance left is ignored. The log says when the values could not be
    /// written.
    void synchronize() override;

    /// From now on the text of `key` is asked of the system, whatever the file says.
    void setSystemString(const std::string& key,
                         std::function<std::optional<std::string>()> answer);

private:
    void set(const std::string& key, const QVariant& value);
    /// The value if it has that type, else an invalid one.
    QVariant find(const std::string& key, QMetaType::Type type) const;
    /// `remedy` is what the program does without the file.
    void setAside(const std::string& remedy);
    /// 0, or the error number; the file then still holds what it held.
    int save();

    const std::string path_;
    const Log log_;
    /// Texts, numbers as texts, and byte arrays; of other types what a file happened to hold.
    std::map<std::string, QVariant> values_;
    std::map<std::string, std::function<std::optional<std::string>()>> systemStrings_;
    /// The keys that were set since the last save.
    std::set<std::string> changed_;
    /// The error of the last save, which is logged once; 0 after one that succeeded.
    int reported_ = 0;
    /// A file that exists and cannot be read may hold what must not be lost.
    bool isReadable_ = true;
};

/// Where the program's settings are kept. Absolute.
std::string settingsPath();

} // namespace vistrane
