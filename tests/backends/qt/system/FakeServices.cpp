#include "tests/backends/qt/system/FakeServices.h"

#include <algorithm>
#include <memory>

#include <QDBusConnection>
#include <QDBusVariant>
#include <gtest/gtest.h>

namespace vistrane {

namespace {

constexpr char connectionName[] = "fake services";

std::string textOf(const QDBusMessage& call) {
    QStringList arguments;
    for (const QVariant& each : call.arguments()) {
        arguments << each.toString();
    }
    return (call.path() + " " + call.interface() + "." + call.member() + "(" +
            arguments.join(", ") + ")")
        .toStdString();
}

} // namespace

class FakeServices::Object final : public QDBusVirtualObject {
public:
    explicit Object(FakeServices& services) : services_(services) {}

    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& call, const QDBusConnection& connection) override {
        const std::string method = (call.interface() + "." + call.member()).toStdString();
        const std::lock_guard lock(services_.mutex_);
        services_.calls_.push_back(textOf(call));
        const auto& ignored = services_.ignored_;
        if (std::find(ignored.begin(), ignored.end(), method) != ignored.end()) {
            return true;
        }
        const auto answer = services_.answers_.find(method);
        connection.send(answer == services_.answers_.end()
                            ? call.createErrorReply(QDBusError::UnknownMethod, "unknown")
                            : call.createReply(answer->second));
        return true;
    }

private:
    FakeServices& services_;
};

FakeServices::FakeServices() : object_(new Object(*this)) {
    thread_.start();
    object_->moveToThread(&thread_);
    QDBusConnection bus =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName);
    bus.registerVirtualObject("/", object_, QDBusConnection::SubPath);
}

FakeServices& FakeServices::shared() {
    /// Ends them after the last test, while there is an application.
    class Owner final : public ::testing::Environment {
    public:
        void TearDown() override { services_.reset(); }
        FakeServices& services() { return *services_; }

    private:
        std::unique_ptr<FakeServices> services_{new FakeServices};
    };
    static auto& owner = dynamic_cast<Owner&>(*::testing::AddGlobalTestEnvironment(new Owner));
    return owner.services();
}

FakeServices::~FakeServices() {
    QDBusConnection(connectionName).unregisterObject("/", QDBusConnection::UnregisterTree);
    QDBusConnection::disconnectFromBus(connectionName);
    object_->deleteLater();
    thread_.quit();
    thread_.wait();
}

void FakeServices::reset() {
    for (const QString& each : offered_) {
        QDBusConnection(connectionName).unregisterService(each);
    }
    const std::lock_guard lock(mutex_);
    offered_.clear();
    answers_.clear();
    ignored_.clear();
    calls_.clear();
}

void FakeServices::offer(const QString& service) {
    QDBusConnection(connectionName).registerService(service);
    offered_ << service;
}

void FakeServices::answer(const std::string& method, const QVariantList& arguments) {
    const std::lock_guard lock(mutex_);
    answers_[method] = arguments;
    ignored_.erase(std::remove(ignored_.begin(), ignored_.end(), method), ignored_.end());
}

void FakeServices::ignore(const std::string& method) {
    const std::lock_guard lock(mutex_);
    ignored_.push_back(method);
}

void FakeServices::sendSetting(const QString& group, const QString& key, const QVariant& value) {
    QDBusMessage signal = QDBusMessage::createSignal(
        "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings", "SettingChanged");
    signal << group << key << QVariant::fromValue(QDBusVariant(value));
    QDBusConnection(connectionName).send(signal);
}

std::vector<std::string> FakeServices::calls() const {
    const std::lock_guard lock(mutex_);
    return calls_;
}

int FakeServices::countOf(const std::string& part) const {
    const std::vector<std::string> all = calls();
    return static_cast<int>(std::count_if(all.begin(), all.end(), [&part](const auto& call) {
        return call.find(part) != std::string::npos;
    }));
}

} // namespace vistrane
