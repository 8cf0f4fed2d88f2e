#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QStringList>
#include <QThread>
#include <QVariant>

namespace vistrane {

/// Values of the portal's "color-scheme".
enum class ColourScheme : unsigned { none = 0, dark = 1, light = 2 };

/// Desktop services on a message bus. They answer on a thread of their own, so that a caller may
/// wait for them on the main thread. Needs a QCoreApplication. Any thread.
class FakeServices {
public:
    explicit FakeServices(const std::string& busAddress);
    ~FakeServices();
    FakeServices(const FakeServices&) = delete;
    FakeServices& operator=(const FakeServices&) = delete;

    /// One instance for all tests of a program, on the session bus: a bus tells its clients late
    /// that a service has come or gone.
    static FakeServices& shared();

    /// Offers a service. Calls without an answer are refused as unknown.
    void offer(const QString& service);
    /// Withdraws it, as the end of its process does, which also forgets every inhibition.
    void withdraw(const QString& service);
    /// Answers calls of that method, given as "interface.method".
    void answer(const std::string& method, const QVariantList& arguments);
    /// Leaves calls unanswered, as a service does that hangs.
    void ignore(const std::string& method);

    /// Offers the desktop portal, which answers with that scheme.
    void offerScheme(const QVariant& scheme);
    /// Sends the signal that a setting of the portal has changed.
    void sendSetting(const QString& group, const QString& key, const QVariant& value);
    /// Changes the scheme and sends the signal.
    void switchTo(ColourScheme scheme);

    /// Offers the desktop portal, which grants requests to keep the machine awake.
    void offerInhibition();
    /// The number of such requests that were neither closed nor ended by the end of the connection
    /// that sent them.
    int inhibitions() const;

    /// Offers the desktop portal, whose folder dialog responds at once with that value and these
    /// addresses; without a value it stays open.
    void offerFolderDialog(std::optional<unsigned> response, const QStringList& addresses,
                           unsigned version = 4);
    /// The title and the options of the last question for a folder.
    std::pair<std::string, QVariantMap> folderQuestion() const;

    /// The number of calls whose text, "path interface.method(argument, argument)", has that part.
    int countOf(const std::string& part) const;

    /// Withdraws every service and forgets every call.
    void reset();

private:
    class Object;

    /// With the mutex locked.
    void answerFolderQuestion(const QDBusMessage& call, const QDBusConnection& connection);

    QThread thread_;
    Object* object_;
    QDBusConnection bus_;
    mutable std::mutex mutex_;
    QStringList offered_;
    std::map<std::string, QVariantList> answers_;
    std::vector<std::string> ignored_;
    std::vector<std::string> calls_;
    bool grantsInhibition_ = false;
    int requests_ = 0;
    bool hasFolderDialog_ = false;
    std::optional<unsigned> folderResponse_;
    QStringList folderAddresses_;
    std::pair<std::string, QVariantMap> folderQuestion_;
    /// The connection that holds each request, by the path of the request.
    std::map<QString, QString> inhibitors_;
};

} // namespace vistrane
