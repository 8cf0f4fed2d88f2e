#pragma once

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QStringList>
#include <QThread>
#include <QVariant>

namespace vistrane {

/// Desktop services on the bus of the test, on a thread of their own: who waits for them on the
/// main thread gets an answer. Any thread.
class FakeServices {
public:
    /// The same ones for all tests: on the bus, services do not come and go at once.
    static FakeServices& shared();
    ~FakeServices();
    FakeServices(const FakeServices&) = delete;
    FakeServices& operator=(const FakeServices&) = delete;

    /// Offers a service. What has no answer is refused as unknown.
    void offer(const QString& service);
    /// Answers calls of that method, given as "interface.method".
    void answer(const std::string& method, const QVariantList& arguments);
    /// Leaves calls without an answer, as a service does that hangs.
    void ignore(const std::string& method);

    /// Sends a signal of the portal's settings.
    void sendSetting(const QString& group, const QString& key, const QVariant& value);

    /// The calls so far, as "path interface.method(argument, argument)".
    std::vector<std::string> calls() const;
    int countOf(const std::string& part) const;

    /// No service is offered any more, and no call is remembered.
    void reset();

private:
    class Object;

    FakeServices();

    QThread thread_;
    Object* object_;
    mutable std::mutex mutex_;
    QStringList offered_;
    std::map<std::string, QVariantList> answers_;
    std::vector<std::string> ignored_;
    std::vector<std::string> calls_;
};

} // namespace vistrane
