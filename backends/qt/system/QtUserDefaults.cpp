#include "backends/qt/system/QtUserDefaults.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include <QByteArray>
#include <QFile>
#include <QLockFile>
#include <QRegularExpression>
#include <QSettings>
#include <QString>
#include <QTemporaryDir>
#include <QTemporaryFile>

#include <fcntl.h>
#include <sys/stat.h>

#include "backends/posix/Descriptor.h"
#include "backends/posix/user_folders.h"
#include "platform/foundation/NSString.h"

namespace vistrane {

namespace {

// The last save may be that of a handler of `exit`, as when the display is lost. By then, statics
// that are younger than the handler are destroyed: those of this file never are.

using Values = std::map<std::string, QVariant>;

/// The largest accepted file: far more than the program writes, but small enough for QSettings,
/// which reads nested values recursively.
constexpr off_t longestFile = 1 << 16;

/// In the name of the folder in which a new file is made, before six random characters.
constexpr char newMark[] = ".new-";

/// The file's bytes. Returns 0 or the error number.
int readFile(const std::string& path, QByteArray& text) {
    // Reading anything but a regular file may block.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat facts {};
    if (!file.isOpen() || ::fstat(file.number(), &facts) != 0) {
        return errno;
    }
    if (!S_ISREG(facts.st_mode)) {
        return EINVAL;
    }
    if (facts.st_size > longestFile) {
        return EFBIG;
    }
    QFile reader;
    if (!reader.open(file.number(), QIODevice::ReadOnly)) {
        return EIO;
    }
    text = reader.readAll();
    return reader.error() == QFile::NoError ? 0 : EIO;
}

/// The number of values in an INI file; nothing if a line is not valid.
std::optional<std::size_t> countValues(const QByteArray& text) {
    std::size_t count = 0;
    for (const QByteArray& each : text.split('\n')) {
        const QByteArray line = each.trimmed();
        if (line.isEmpty() || line.startsWith(';') ||
            (line.startsWith('[') && line.endsWith(']'))) {
            continue;
        }
        if (line.indexOf('=') < 1) {
            return std::nullopt;
        }
        ++count;
    }
    return count;
}

/// The first format of the settings:
///
///     Vistrane settings 1
///     "iData" = <76 02 ff>
///     "iFPS" = 30
///     end
constexpr char firstFormatLine[] = "Vistrane settings 1\n";

std::optional<Values> parseFirstFormat(const QByteArray& text) {
    static const auto& setting = *new QRegularExpression(
        R"re(^"(\w+)" = (?:(-?\d+)|<([0-9a-f ]*)>)$)re", QRegularExpression::MultilineOption);
    Values values;
    for (const QRegularExpressionMatch& each : setting.globalMatch(QString::fromLatin1(text))) {
        values[each.captured(1).toStdString()] =
            each.hasCaptured(3) ? QVariant(QByteArray::fromHex(each.captured(3).toLatin1()))
                                : QVariant(each.captured(2));
    }
    const auto lines = static_cast<std::size_t>(text.count('\n'));
    const bool isWhole = text.endsWith("\nend\n") && lines == values.size() + 2;
    return isWhole ? std::optional(std::move(values)) : std::nullopt;
}

/// The text without the lines whose values QSettings would read as anything but numbers, texts and
/// byte arrays. QSettings reads other values with QDataStream, which allocates as much memory as
/// the value asks for. Nothing if a value does not end with its line.
std::optional<QByteArray> withoutOtherValues(const QByteArray& text) {
    // Of a text: a plain character, or an escape that QSettings writes. None becomes "@".
    static const auto& inText = *new QString(R"re(@\\\r]|\\(?:[abfnrtv"?'\\]|[0-7](?![0-7])|)re"
                                             R"re(x(?!0*40(?![0-9a-fA-F]))[0-9a-fA-F]+))re");
    static const auto& plain =
        *new QRegularExpression(R"re(^[^="\\\r]+=(?:)re"
                                R"re((?:[^")re" +
                                inText + R"re()*|"(?:[^")re" + inText +
                                R"re()*"|)re"
                                R"re(@(?:ByteArray|String)\((?:[^",\\\r]|\\[^\r])*\)|)re"
                                R"re("@(?:ByteArray|String)\((?:[^"\\\r]|\\[^\r])*\)")$)re");
    static const auto& closed =
        *new QRegularExpression(R"re(^(?:[^"\\\r]|\\[^\r]|"(?:[^"\\\r]|\\[^\r])*")*$)re");
    QByteArray result;
    for (const QByteArray& each : text.split('\n')) {
        const QByteArray line = each.trimmed();
        const bool isValue =
            !line.startsWith(';') && !line.startsWith('[') && line.indexOf('=') > 0;
        if (!isValue || plain.match(QString::fromLatin1(line)).hasMatch()) {
            result += line + '\n';
        } else if (!closed.match(QString::fromLatin1(line)).hasMatch()) {
            return std::nullopt;
        }
    }
    return result;
}

struct Stored {
    /// The error number if the file cannot be read; ENOENT if there is none.
    int error = 0;
    /// The settings; nothing if they are damaged.
    std::optional<Values> values;
    bool isIni = false;
};

Stored parseIni(const std::string& path, const QByteArray& text) {
    const std::optional<QByteArray> safeText = withoutOtherValues(text);
    const std::optional<std::size_t> count = safeText ? countValues(*safeText) : std::nullopt;
    if (!count) {
        return {0, std::nullopt, true};
    }
    QString name = QFile::decodeName(path.c_str());
    QTemporaryFile copy;
    if (count != countValues(text)) {
        if (!copy.open() || copy.write(*safeText) != safeText->size() || !copy.flush()) {
            return {0, std::nullopt, true};
        }
        name = copy.fileName();
    }
    const QSettings file(name, QSettings::IniFormat);
    Values values;
    bool isWhole = true;
    for (const QString& key : file.allKeys()) {
        isWhole = isWhole && file.contains(key); // false for a key that QSettings would not write
        values[key.toStdString()] = file.value(key);
    }
    // Of two lines with one key QSettings reads the second. Saving would lose the first.
    if (isWhole && count == values.size()) {
        return {0, std::move(values), true};
    }
    // QSettings opens the file itself, does not say if that fails, and then has no values.
    QByteArray again;
    return {values.empty() ? readFile(path, again) : 0, std::nullopt, true};
}

Stored readSettings(const std::string& path) {
    QByteArray text;
    if (const int error = readFile(path, text)) {
        return {error, std::nullopt, false};
    }
    if (text.startsWith(firstFormatLine)) {
        return {0, parseFirstFormat(text), false};
    }
    return parseIni(path, text);
}

/// The file that `path` refers to, with links resolved; `path` if there is none.
std::filesystem::path resolveLinks(const std::string& path) {
    std::error_code error;
    const std::filesystem::path real = std::filesystem::canonical(path, error);
    return error ? std::filesystem::path(path) : real;
}

/// Creates a folder and those above it, as private as the settings.
void makeFolder(const std::filesystem::path& path) {
    constexpr mode_t onlyUser = 0700;
    if (::mkdir(path.c_str(), onlyUser) != 0 && errno == ENOENT && path.has_relative_path()) {
        makeFolder(path.parent_path());
        ::mkdir(path.c_str(), onlyUser);
    }
}

/// Creates the file if there is none.
int makePrivate(const std::string& path) {
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0600));
    return file.isOpen() && ::fchmod(file.number(), 0600) == 0 ? 0 : errno;
}

/// Waits while another instance saves. Removes the lock of one that was stopped while it saved.
void takeLock(QLockFile& lock) {
    if (!lock.tryLock(500) && lock.error() == QLockFile::LockFailedError) {
        QFile::remove(lock.fileName());
    }
}

/// Writes the values into a new INI file. Returns 0 or an error number.
int writeIni(const std::string& path, const Values& values) {
    QSettings file(QFile::decodeName(path.c_str()), QSettings::IniFormat);
    for (const auto& [key, value] : values) {
        file.setValue(QString::fromStdString(key), value);
    }
    file.sync();
    // QSettings reports no error if a part was written before the disk was full.
    QByteArray text;
    const bool isWhole = file.status() == QSettings::NoError && readFile(path, text) == 0 &&
                         text.endsWith('\n') && countValues(text) == values.size();
    return isWhole ? makePrivate(path) : EIO;
}

int flushFile(const std::string& path) {
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    return file.isOpen() ? syncToDisk(file.number()) : errno;
}

/// Removes what killed programs left of their saves: folders whose paths begin like that. None of a
/// save that may still go on.
void removeLeftovers(const std::filesystem::path& start) {
    constexpr std::chrono::minutes longestSave{1};
    const auto limit = std::filesystem::file_time_type::clock::now() - longestSave;
    std::error_code error;
    std::filesystem::directory_iterator entry(start.parent_path(), error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        std::error_code ignored;
        if (entry->path().filename().string().starts_with(start.filename().string()) &&
            entry->symlink_status(ignored).type() == std::filesystem::file_type::directory &&
            entry->last_write_time(ignored) < limit) {
            std::filesystem::remove_all(entry->path(), ignored);
        }
    }
}

/// Gives the file these values. It has either the old or the new ones at every moment, even if the
/// power fails. Returns 0 or an error number.
int replaceFile(const std::filesystem::path& path, const Values& values) {
    // A name of its own for each attempt: QSettings keeps what it could not write to a file.
    const std::string start = path.string() + newMark;
    removeLeftovers(start);
    const QTemporaryDir folder(QFile::decodeName((start + "XXXXXX").c_str()));
    if (!folder.isValid()) {
        return errno != 0 ? errno : EIO;
    }
    const std::string written = QFile::encodeName(folder.filePath("settings")).toStdString();
    int error = writeIni(written, values);
    if (error == 0) {
        error = flushFile(written);
    }
    const auto rename = [&] { return std::rename(written.c_str(), path.c_str()); };
    if (error == 0 && uninterrupted(rename) != 0) {
        error = errno;
    }
    if (error == 0) {
        flushFile(path.parent_path().string()); // Not every file system supports that.
    }
    return error;
}

} // namespace

QtUserDefaults::QtUserDefaults(std::string path, Log log)
    : path_(std::move(path)), log_(std::move(log)) {
    // Makes QSettings' own statics, before a handler of `exit` that uses them is registered.
    const QSettings oldest(QStringLiteral("/dev/null"), QSettings::IniFormat);
    Stored stored = readSettings(path_);
    if (stored.values) {
        values_ = std::move(*stored.values);
    } else if (stored.error == 0) {
        setAside("starts with its default settings");
    } else if (stored.error != ENOENT) {
        log_("The settings in '" + path_ + "' cannot be read: " + std::strerror(stored.error) +
             ". The program starts with its default settings and does not save them.");
        isReadable_ = false;
    }
}

void QtUserDefaults::setAside(const std::string& remedy) {
    // A link itself is renamed: what it refers to may belong to another program.
    std::string aside = path_ + ".damaged";
    std::error_code error;
    for (int number = 2; std::filesystem::symlink_status(aside, error).type() !=
                         std::filesystem::file_type::not_found;
         ++number) {
        aside = path_ + ".damaged-" + std::to_string(number);
    }
    const bool isAside = std::rename(path_.c_str(), aside.c_str()) == 0;
    log_("The settings in '" + path_ + "' are damaged" +
         (isAside ? " and were set aside as '" + aside + "'" : std::string()) + ". The program " +
         remedy + ".");
}

QVariant QtUserDefaults::find(const std::string& key, QMetaType::Type type) const {
    const auto entry = values_.find(key);
    return entry != values_.end() && entry->second.typeId() == type ? entry->second : QVariant();
}

void QtUserDefaults::set(const std::string& key, const QVariant& value) {
    const std::lock_guard lock(mutex_);
    if (isRehearsal_) {
        remembered_[key] = value;
        return;
    }
    values_[key] = value;
    changes_[key] = value;
}

NSInteger QtUserDefaults::integerForKey(const std::string& key) const {
    const std::optional<std::string> text = stringForKey(key);
    return text ? integerValue(*text) : 0;
}

void QtUserDefaults::setInteger(NSInteger value, const std::string& key) {
    set(key, QString::number(value));
}

std::optional<std::string> QtUserDefaults::stringForKey(const std::string& key) const {
    const auto system = systemStrings_.find(key);
    if (system != systemStrings_.end()) {
        return system->second();
    }
    const QVariant value = find(key, QMetaType::QString);
    return value.isValid() ? std::optional(value.toString().toStdString()) : std::nullopt;
}

std::optional<std::vector<std::uint8_t>>
QtUserDefaults::objectForKey(const std::string& key) const {
    const QVariant value = find(key, QMetaType::QByteArray);
    if (!value.isValid()) {
        return std::nullopt;
    }
    const QByteArray bytes = value.toByteArray();
    return std::vector<std::uint8_t>(bytes.begin(), bytes.end());
}

void QtUserDefaults::setObject(const std::vector<std::uint8_t>& value, const std::string& key) {
    set(key, QByteArray(reinterpret_cast<const char*>(value.data()),
                        static_cast<qsizetype>(value.size())));
}

void QtUserDefaults::synchronize() {
    const std::lock_guard lock(mutex_);
    if (isRehearsal_ || changes_.empty() || !isReadable_) {
        return;
    }
    const int error = save(changes_);
    if (error == 0) {
        changes_.clear();
    }
    if (error != std::exchange(reported_, error) && error != 0) {
        log_("The settings cannot be written to '" + path_ + "': " + std::strerror(error) +
             ". They are lost when the program ends.");
    }
}

void QtUserDefaults::rehearse(const std::function<void()>& save) {
    isRehearsal_ = true;
    save();
    isRehearsal_ = false;
}

void QtUserDefaults::saveRemembered() {
    const std::unique_lock lock(mutex_, std::try_to_lock);
    if (!lock.owns_lock() || !isReadable_) {
        return;
    }
    Values changes = remembered_;
    changes.insert(changes_.begin(), changes_.end());
    if (!changes.empty()) {
        save(changes);
    }
}

int QtUserDefaults::save(const Values& changes) {
    makeFolder(resolveLinks(path_).parent_path()); // without it, creating the file fails
    QLockFile lock(QFile::decodeName((path_ + ".lock").c_str()));
    takeLock(lock);
    const Stored stored = readSettings(path_);
    if (stored.error != 0 && stored.error != ENOENT) {
        return stored.error;
    }
    if (stored.error == 0 && !stored.values) {
        setAside("saves its own");
    }
    if (!stored.values) {
        // Also for the next attempt, which may find an empty file.
        changes_.insert(values_.begin(), values_.end());
    }
    // Creates the file that a link refers to.
    if (const int error = makePrivate(path_)) {
        return error;
    }
    Values values = stored.values.value_or(values_);
    for (const auto& [key, value] : changes) {
        values[key] = value;
    }
    const bool isSaved = stored.isIni && stored.values == values;
    return isSaved ? flushFile(path_) : replaceFile(resolveLinks(path_), values);
}

void QtUserDefaults::setSystemString(const std::string& key,
                                     std::function<std::optional<std::string>()> answer) {
    systemStrings_[key] = std::move(answer);
}

std::string settingsPath() {
    return configurationFolder() + "/vistrane/settings";
}

} // namespace vistrane
