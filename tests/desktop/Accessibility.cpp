#include "tests/desktop/Accessibility.h"

#include <cstdint>
#include <sstream>
#include <utility>

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDBusVariant>

#include "tests/desktop/waiting.h"

namespace vistrane {

namespace {

constexpr char accessible[] = "org.a11y.atspi.Accessible";
constexpr char valueInterface[] = "org.a11y.atspi.Value";
constexpr char registry[] = "org.a11y.atspi.Registry";
constexpr char rootPath[] = "/org/a11y/atspi/accessible/root";
constexpr char nullPath[] = "/org/a11y/atspi/null";

QDBusMessage call(const QDBusConnection& bus, const QString& service, const QString& path,
                  const QString& interface, const QString& method,
                  const QVariantList& arguments = {}) {
    constexpr int timeoutMilliseconds = 30000;
    QDBusMessage question = QDBusMessage::createMethodCall(service, path, interface, method);
    question.setArguments(arguments);
    QDBusMessage answer = bus.call(question, QDBus::Block, timeoutMilliseconds);
    if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty()) {
        throw Unanswered(answer.errorMessage().toStdString());
    }
    return answer;
}

/// A control as the protocol names it: the program on the bus, and a path.
struct Reference {
    QString program;
    QDBusObjectPath path;
};

const QDBusArgument& operator>>(const QDBusArgument& argument, Reference& reference) {
    argument.beginStructure();
    argument >> reference.program >> reference.path;
    argument.endStructure();
    return argument;
}

QList<Reference> childrenIn(const QDBusMessage& answer) {
    return qdbus_cast<QList<Reference>>(answer.arguments().constFirst());
}

QDBusConnection accessibilityBusOf(const std::string& sessionAddress) {
    constexpr char sessionName[] = "session of assistive technologies";
    const QDBusConnection session =
        QDBusConnection::connectToBus(QString::fromStdString(sessionAddress), sessionName);
    const QString address =
        call(session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress")
            .arguments()
            .constFirst()
            .toString();
    QDBusConnection::disconnectFromBus(sessionName);
    return QDBusConnection::connectToBus(address, address);
}

void outlineInto(std::ostream& out, const Control& control, std::size_t depth) {
    out << std::string(2 * depth, ' ');
    try {
        const QRect place = control.extents();
        out << control.role() << " \"" << control.name() << '"';
        if (!place.isEmpty()) {
            out << ' ' << place.width() << 'x' << place.height() << '+' << place.x() << '+'
                << place.y();
        }
        for (const auto& [state, word] : {std::pair(ControlState::showing, " showing"),
                                          std::pair(ControlState::enabled, " enabled"),
                                          std::pair(ControlState::checked, " checked"),
                                          std::pair(ControlState::focused, " focused"),
                                          std::pair(ControlState::active, " active")}) {
            out << (control.is(state) ? word : "");
        }
        out << " - " << control.description() << '\n';
        for (const Control& child : control.children()) {
            outlineInto(out, child, depth + 1);
        }
    } catch (const Unanswered& unanswered) {
        out << "(" << unanswered.what() << ")\n";
    }
}

} // namespace

AccessibilityBus::AccessibilityBus(const std::string& sessionAddress)
    : bus_(accessibilityBusOf(sessionAddress)) {
    bus_.connect({}, {}, "org.a11y.atspi.Event.Object", "PropertyChange", this,
                 SLOT(countChange(QDBusMessage)));
    // Programs send the signal only when somebody has registered for it.
    bus_.call(QDBusMessage::createMethodCall(registry, "/org/a11y/atspi/registry", registry,
                                             "RegisterEvent")
              << QStringLiteral("Object:PropertyChange:AccessibleValue"));
}

AccessibilityBus::~AccessibilityBus() {
    QDBusConnection::disconnectFromBus(bus_.name());
}

void AccessibilityBus::countChange(const QDBusMessage& signal) {
    if (signal.arguments().value(0) == QStringLiteral("accessible-value")) {
        ++changes_[signal.service() + signal.path()];
    }
}

std::optional<Control> AccessibilityBus::programOf(pid_t process) {
    for (const Reference& program :
         childrenIn(call(bus_, registry, rootPath, accessible, "GetChildren"))) {
        if (bus_.interface()->servicePid(program.program).value() == static_cast<uint>(process)) {
            return Control(shared_from_this(), program.program, program.path.path());
        }
    }
    return std::nullopt;
}

Control::Control(std::shared_ptr<AccessibilityBus> bus, QString program, QString path)
    : bus_(std::move(bus)), program_(std::move(program)), path_(std::move(path)) {}

QDBusMessage Control::call(const char* interface, const char* method,
                           const QVariantList& arguments) const {
    return vistrane::call(bus_->bus_, program_, path_, interface, method, arguments);
}

QVariant Control::property(const char* interface, const char* name) const {
    const QDBusMessage answer =
        call("org.freedesktop.DBus.Properties", "Get", {QString(interface), QString(name)});
    return answer.arguments().constFirst().value<QDBusVariant>().variant();
}

std::string Control::name() const {
    return property(accessible, "Name").toString().toStdString();
}

std::string Control::description() const {
    return property(accessible, "Description").toString().toStdString();
}

std::string Control::role() const {
    return call(accessible, "GetRoleName").arguments().constFirst().toString().toStdString();
}

std::vector<Control> Control::children() const {
    std::vector<Control> children;
    for (const Reference& child : childrenIn(call(accessible, "GetChildren"))) {
        if (child.path.path() != nullPath) {
            children.emplace_back(bus_, child.program, child.path.path());
        }
    }
    return children;
}

std::optional<Control> Control::parent() const {
    const auto parent = qdbus_cast<Reference>(property(accessible, "Parent"));
    if (parent.path.path() == nullPath) {
        return std::nullopt;
    }
    return Control(bus_, parent.program, parent.path.path());
}

bool Control::is(ControlState state) const {
    const auto words =
        qdbus_cast<QList<uint>>(call(accessible, "GetState").arguments().constFirst());
    const auto bit = static_cast<unsigned>(state);
    return ((words.value(bit / 32) >> (bit % 32)) & 1U) != 0;
}

QRect Control::extents() const {
    constexpr uint onScreen = 0;
    const QDBusMessage answer = call("org.a11y.atspi.Component", "GetExtents", {onScreen});
    return qdbus_cast<QRect>(answer.arguments().constFirst());
}

std::string Control::text() const {
    constexpr int end = -1;
    return call("org.a11y.atspi.Text", "GetText", {0, end})
        .arguments()
        .constFirst()
        .toString()
        .toStdString();
}

double Control::value() const {
    return property(valueInterface, "CurrentValue").toDouble();
}

double Control::minimum() const {
    return property(valueInterface, "MinimumValue").toDouble();
}

double Control::maximum() const {
    return property(valueInterface, "MaximumValue").toDouble();
}

int Control::valueChanges() const {
    // The signals that came before the last answer are waiting for this thread.
    QCoreApplication::processEvents();
    return bus_->changes_[program_ + path_];
}

std::vector<Control> allBelow(const Control& control, const ControlTest& passes) {
    std::vector<Control> found;
    if (passes(control)) {
        found.push_back(control);
    }
    for (const Control& child : control.children()) {
        const auto below = allBelow(child, passes);
        found.insert(found.end(), below.begin(), below.end());
    }
    return found;
}

std::optional<Control> firstBelow(const Control& control, const ControlTest& passes) {
    if (passes(control)) {
        return control;
    }
    for (const Control& child : control.children()) {
        if (auto found = firstBelow(child, passes)) {
            return found;
        }
    }
    return std::nullopt;
}

std::string outline(const Control& control) {
    std::ostringstream out;
    outlineInto(out, control, 0);
    return out.str();
}

} // namespace vistrane
