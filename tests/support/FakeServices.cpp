#include "tests/support/FakeServices.h"

#include <algorithm>
#include <memory>

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <gtest/gtest.h>

namespace vistrane {

namespace {

constexpr char desktopPortal[] = "org.freedesktop.portal.Desktop";
constexpr char readSetting[] = "org.freedesktop.portal.Settings.Read";
constexpr char openFile[] = "org.freedesktop.portal.FileChooser.OpenFile";
constexpr char getProperty[] = "org.freedesktop.DBus.Properties.Get";
constexpr char inhibit[] = "org.freedesktop.portal.Inhibit.Inhibit";
constexpr char closeRequest[] = "org.freedesktop.portal.Request.Close";

/// In two variants, as the portal's older method answers.
QVariant wrappedTwice(const QVariant& value) {
    return QVariant::fromValue(QDBusVariant(QVariant::fromValue(QDBusVariant(value))));
}

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
        if (method == closeRequest) {
            services_.inhibitors_.erase(call.path());
        }
        if (method == inhibit && services_.grantsInhibition_) {
            const QString request = "/request/" + QString::number(++services_.requests_);
            services_.inhibitors_[request] = call.service();
            connection.send(call.createReply(QVariant::fromValue(QDBusObjectPath(request))));
            return true;
        }
        if (method == openFile && services_.hasFolderDialog_) {
            services_.answerFolderQuestion(call, connection);
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

FakeServices::FakeServices(const std::string& busAddress)
    : object_(new Object(*this)),
      bus_(QDBusConnection::connectToBus(QString::fromStdString(busAddress), "fake services")) {
    bus_.registerVirtualObject("/", object_, QDBusConnection::SubPath);
    thread_.start();
    object_->moveToThread(&thread_);
}

FakeServices& FakeServices::shared() {
    /// Destroys them after the last test, while there is an application.
    class Owner final : public ::testing::Environment {
    public:
        void TearDown() override { services_.reset(); }
        FakeServices& services() { return *services_; }

    private:
        std::unique_ptr<FakeServices> services_ = std::make_unique<FakeServices>(
            qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS").toStdString());
    };
    static auto& owner = dynamic_cast<Owner&>(*::testing::AddGlobalTestEnvironment(new Owner));
    return owner.services();
}

FakeServices::~FakeServices() {
    bus_.unregisterObject("/", QDBusConnection::UnregisterTree);
    QDBusConnection::disconnectFromBus(bus_.name());
    object_->deleteLater();
    thread_.quit();
    thread_.wait();
}

void FakeServices::reset() {
    for (const QString& each : offered_) {
        bus_.unregisterService(each);
    }
    const std::lock_guard lock(mutex_);
    offered_.clear();
    answers_.clear();
    ignored_.clear();
    calls_.clear();
    grantsInhibition_ = false;
    hasFolderDialog_ = false;
    inhibitors_.clear();
}

void FakeServices::offer(const QString& service) {
    bus_.registerService(service);
    offered_ << service;
}

void FakeServices::withdraw(const QString& service) {
    bus_.unregisterService(service);
    const std::lock_guard lock(mutex_);
    offered_.removeAll(service);
    inhibitors_.clear();
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

void FakeServices::offerScheme(const QVariant& scheme) {
    offer(desktopPortal);
    answer(readSetting, {wrappedTwice(scheme)});
}

void FakeServices::offerInhibition() {
    offer(desktopPortal);
    answer(closeRequest, {});
    const std::lock_guard lock(mutex_);
    grantsInhibition_ = true;
}

int FakeServices::inhibitions() const {
    std::map<QString, QString> inhibitors;
    {
        const std::lock_guard lock(mutex_);
        inhibitors = inhibitors_;
    }
    return static_cast<int>(
        std::count_if(inhibitors.begin(), inhibitors.end(), [this](const auto& each) {
            return bus_.interface()->isServiceRegistered(each.second).value();
        }));
}

void FakeServices::offerFolderDialog(std::optional<unsigned> response, const QStringList& addresses,
                                     unsigned version) {
    offer(desktopPortal);
    answer(getProperty, {QVariant::fromValue(QDBusVariant(version))});
    const std::lock_guard lock(mutex_);
    hasFolderDialog_ = true;
    folderResponse_ = response;
    folderAddresses_ = addresses;
}

std::pair<std::string, QVariantMap> FakeServices::folderQuestion() const {
    const std::lock_guard lock(mutex_);
    return folderQuestion_;
}

void FakeServices::answerFolderQuestion(const QDBusMessage& call,
                                        const QDBusConnection& connection) {
    const auto options = qdbus_cast<QVariantMap>(call.arguments().value(2));
    folderQuestion_ = {call.arguments().value(1).toString().toStdString(), options};
    QString sender = call.service().mid(1);
    sender.replace('.', '_');
    const QString request = "/org/freedesktop/portal/desktop/request/" + sender + "/" +
                            options["handle_token"].toString();
    connection.send(call.createReply(QVariant::fromValue(QDBusObjectPath(request))));
    if (folderResponse_) {
        QDBusMessage response = QDBusMessage::createTargetedSignal(
            call.service(), request, "org.freedesktop.portal.Request", "Response");
        response << *folderResponse_ << QVariantMap{{"uris", folderAddresses_}};
        connection.send(response);
    }
}

void FakeServices::sendSetting(const QString& group, const QString& key, const QVariant& value) {
    QDBusMessage signal = QDBusMessage::createSignal(
        "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings", "SettingChanged");
    signal << group << key << QVariant::fromValue(QDBusVariant(value));
    bus_.send(signal);
}

void FakeServices::switchTo(ColourScheme scheme) {
    const QVariant value(static_cast<unsigned>(scheme));
    answer(readSetting, {wrappedTwice(value)});
    sendSetting("org.freedesktop.appearance", "color-scheme", value);
}

int FakeServices::countOf(const std::string& part) const {
    const std::lock_guard lock(mutex_);
    return static_cast<int>(std::count_if(calls_.begin(), calls_.end(), [&part](const auto& call) {
        return call.find(part) != std::string::npos;
    }));
}

} // namespace vistrane
