#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <QVariant>

#include "platform/foundation/NSUserDefaults.h"

namespace vistrane {

/// The settings in one INI file, which is read once. `synchronize` saves the keys that were set
/// since the last save.
///
/// Several instances of the program may share the file: each saves the keys that it has set and
/// keeps the others as they are in the file. Values that another instance saves are seen only at
/// the next start.
///
/// An unreadable value counts as absent. A file that is not a list of settings is renamed to
/// "NAME.damaged", or "NAME.damaged-2" and so on if that name is taken, and the settings start
/// empty. If the file or folder cannot be read or written, that is logged, and the settings last as
/// long as the process.
///
/// INI does not distinguish a number from a text of digits: `stringForKey` returns the digits of a
/// number.
class QtUserDefaults final : public NSUserDefaults {
public:
    using Log = std::function<void(const std::string& line)>;

    /// `path` is absolute. Its folder is created when the first value is written. Only the user may
    /// read what is created.
    QtUserDefaults(std::string path, Log log);

    NSInteger integerForKey(const std::string& key) const override;
    void setInteger(NSInteger value, const std::string& key) override;
    std::optional<std::string> stringForKey(const std::string& key) const override;
    std::optional<std::vector<std::uint8_t>> objectForKey(const std::string& key) const override;
    void setObject(const std::vector<std::uint8_t>& value, const std::string& key) override;
    /// If another instance is saving, waits for up to half a second; that instance may have been
    /// stopped. Ignores the lock of a crashed instance. Logs if the values cannot be written.
    void synchronize() override;

    /// Runs `save` as a rehearsal: the values that it sets are only remembered for
    /// `saveRemembered`.
    void rehearse(const std::function<void()>& save);

    /// For a process that ends while the main thread is held up: saves the remembered values and
    /// those that `synchronize` has not saved yet. Any thread. Does nothing if the main thread is
    /// saving.
    void saveRemembered();

    /// From now on `answer` supplies the text of `key`, whatever the file says.
    void setSystemString(const std::string& key,
                         std::function<std::optional<std::string>()> answer);

private:
    using Values = std::map<std::string, QVariant>;

    void set(const std::string& key, const QVariant& value);
    /// The value if it has that type, otherwise an invalid one.
    QVariant find(const std::string& key, QMetaType::Type type) const;
    /// `remedy` says, for the log, what the program does without the file.
    void setAside(const std::string& remedy);
    /// Returns 0, or the error number; the file is then unchanged.
    int save(const Values& changes);

    const std::string path_;
    const Log log_;
    std::mutex mutex_; // guards what `saveRemembered` reads; locked by whoever writes it
    /// Texts, numbers as texts, byte arrays, and any other types that the file happened to hold.
    Values values_;
    std::map<std::string, std::function<std::optional<std::string>()>> systemStrings_;
    /// The values that were set since the last save.
    Values changes_;
    Values remembered_;
    bool isRehearsal_ = false;
    /// The error of the last save, so that it is logged once; 0 after success.
    int reported_ = 0;
    /// If false, nothing is saved: an unreadable file may hold values that must not be lost.
    bool isReadable_ = true;
};

/// The absolute path of the program's settings file.
std::string settingsPath();

} // namespace vistrane
