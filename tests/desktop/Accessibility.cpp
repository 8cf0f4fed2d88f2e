#include "tests/desktop/Accessibility.h"

#include <map>
#include <mutex>
#include <sstream>

#include "tests/desktop/waiting.h"

#include <gio/gio.h>

namespace vistrane {

namespace {

constexpr char accessible[] = "org.a11y.atspi.Accessible";
constexpr char component[] = "org.a11y.atspi.Component";
constexpr char textInterface[] = "org.a11y.atspi.Text";
constexpr char valueInterface[] = "org.a11y.atspi.Value";
constexpr char registry[] = "org.a11y.atspi.Registry";
constexpr char rootPath[] = "/org/a11y/atspi/accessible/root";
constexpr char nullPath[] = "/org/a11y/atspi/null";
constexpr int answerMilliseconds = 30000;

struct Unreference {
    void operator()(GVariant* variant) const { g_variant_unref(variant); }
    void operator()(GDBusConnection* connection) const { g_object_unref(connection); }
};

using Answer = std::unique_ptr<GVariant, Unreference>;
using Connection = std::unique_ptr<GDBusConnection, Unreference>;

[[noreturn]] void giveUp(GError* error) {
    const std::string message = error->message;
    g_error_free(error);
    throw Unanswered(message);
}

Connection connectTo(const std::string& address) {
    GError* error = nullptr;
    GDBusConnection* connection = g_dbus_connection_new_for_address_sync(
        address.c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, &error);
    if (connection == nullptr) {
        giveUp(error);
    }
    g_dbus_connection_set_exit_on_close(connection, FALSE);
    return Connection(connection);
}

Answer call(GDBusConnection* connection, const std::string& name, const std::string& path,
            const char* interface, const char* method, GVariant* arguments = nullptr) {
    GError* error = nullptr;
    GVariant* answer = g_dbus_connection_call_sync(
        connection, name.c_str(), path.c_str(), interface, method, arguments, nullptr,
        G_DBUS_CALL_FLAGS_NONE, answerMilliseconds, nullptr, &error);
    if (answer == nullptr) {
        giveUp(error);
    }
    return Answer(answer);
}

Answer property(GDBusConnection* connection, const std::string& name, const std::string& path,
                const char* interface, const char* property) {
    const Answer answer = call(connection, name, path, "org.freedesktop.DBus.Properties", "Get",
                               g_variant_new("(ss)", interface, property));
    GVariant* value = nullptr;
    g_variant_get(answer.get(), "(v)", &value);
    return Answer(value);
}

std::string textOf(const Answer& answer) {
    if (!g_variant_is_of_type(answer.get(), G_VARIANT_TYPE_STRING)) {
        throw Unanswered("not a text");
    }
    return g_variant_get_string(answer.get(), nullptr);
}

std::string onlyText(const Answer& answer) {
    const gchar* text = "";
    g_variant_get(answer.get(), "(&s)", &text);
    return text;
}

/// Pairs of a program's name on the bus and a path.
std::vector<std::pair<std::string, std::string>> references(const Answer& answer) {
    std::vector<std::pair<std::string, std::string>> found;
    GVariantIter* entries = nullptr;
    g_variant_get(answer.get(), "(a(so))", &entries);
    const gchar* program = nullptr;
    const gchar* path = nullptr;
    while (g_variant_iter_next(entries, "(&s&o)", &program, &path)) {
        found.emplace_back(program, path);
    }
    g_variant_iter_free(entries);
    return found;
}

void outlineInto(std::ostream& out, const Control& control, std::size_t depth) {
    out << std::string(2 * depth, ' ');
    try {
        const Rectangle place = control.extents();
        out << control.role() << " \"" << control.name() << '"';
        if (!place.isEmpty()) {
            out << ' ' << place.width << 'x' << place.height << '+' << place.x << '+' << place.y;
        }
        for (const auto& [state, word] : {std::pair(ControlState::showing, " showing"),
                                          std::pair(ControlState::enabled, " enabled"),
                                          std::pair(ControlState::checked, " checked"),
                                          std::pair(ControlState::focusable, " focusable"),
                                          std::pair(ControlState::focused, " focused"),
                                          std::pair(ControlState::active, " active")}) {
            out << (control.is(state) ? word : "");
        }
        const std::string description = control.description();
        if (!description.empty()) {
            out << " - " << description;
        }
        out << '\n';
        for (const Control& child : control.children()) {
            outlineInto(out, child, depth + 1);
        }
    } catch (const Unanswered& unanswered) {
        out << "(" << unanswered.what() << ")\n";
    }
}

} // namespace

class AccessibilityBus::Bus {
public:
    Bus() = default;
    ~Bus() {
        if (filter != 0) {
            // Returns when no call of it is under way.
            g_dbus_connection_remove_filter(connection.get(), filter);
            g_dbus_connection_close_sync(connection.get(), nullptr, nullptr);
        }
    }
    Bus(const Bus&) = delete;
    Bus& operator=(const Bus&) = delete;

    /// On a thread of the connection's.
    static GDBusMessage* note(GDBusConnection* /*connection*/, GDBusMessage* message,
                              gboolean isIncoming, gpointer bus) {
        GVariant* body = g_dbus_message_get_body(message);
        const gchar* member = g_dbus_message_get_member(message);
        if (isIncoming != FALSE && body != nullptr && member != nullptr &&
            std::string(member) == "PropertyChange" && g_variant_n_children(body) > 0) {
            const Answer detail(g_variant_get_child_value(body, 0));
            if (textOf(detail) == "accessible-value") {
                auto* self = static_cast<Bus*>(bus);
                const std::lock_guard lock(self->mutex);
                ++self->changes[std::string(g_dbus_message_get_sender(message)) +
                                g_dbus_message_get_path(message)];
            }
        }
        return message;
    }

    Connection connection;
    guint filter = 0;
    std::mutex mutex;
    std::map<std::string, int> changes;
};

AccessibilityBus::AccessibilityBus() : bus_(std::make_unique<Bus>()) {}

AccessibilityBus::~AccessibilityBus() = default;

std::shared_ptr<AccessibilityBus> AccessibilityBus::onSession(const std::string& sessionAddress) {
    const Connection session = connectTo(sessionAddress);
    const std::string address = onlyText(
        call(session.get(), "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress"));
    std::shared_ptr<AccessibilityBus> bus(new AccessibilityBus);
    bus->bus_->connection = connectTo(address);
    return bus;
}

void AccessibilityBus::countValueChanges() {
    GDBusConnection* connection = bus_->connection.get();
    bus_->filter = g_dbus_connection_add_filter(connection, Bus::note, bus_.get(), nullptr);
    call(connection, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
         "AddMatch", g_variant_new("(s)", "type='signal',interface='org.a11y.atspi.Event.Object'"));
    call(connection, registry, "/org/a11y/atspi/registry", "org.a11y.atspi.Registry",
         "RegisterEvent", g_variant_new("(s)", "Object:PropertyChange:AccessibleValue"));
}

std::optional<Control> AccessibilityBus::programOf(pid_t process) {
    GDBusConnection* connection = bus_->connection.get();
    for (const auto& [program, path] :
         references(call(connection, registry, rootPath, accessible, "GetChildren"))) {
        const Answer answer = call(connection, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                   "org.freedesktop.DBus", "GetConnectionUnixProcessID",
                                   g_variant_new("(s)", program.c_str()));
        guint32 owner = 0;
        g_variant_get(answer.get(), "(u)", &owner);
        if (static_cast<pid_t>(owner) == process) {
            return Control(shared_from_this(), program, path);
        }
    }
    return std::nullopt;
}

Control::Control(std::shared_ptr<AccessibilityBus> bus, std::string program, std::string path)
    : bus_(std::move(bus)), program_(std::move(program)), path_(std::move(path)) {}

std::string Control::name() const {
    return textOf(property(bus_->bus_->connection.get(), program_, path_, accessible, "Name"));
}

std::string Control::description() const {
    return textOf(
        property(bus_->bus_->connection.get(), program_, path_, accessible, "Description"));
}

std::string Control::role() const {
    return onlyText(call(bus_->bus_->connection.get(), program_, path_, accessible, "GetRoleName"));
}

std::vector<Control> Control::children() const {
    std::vector<Control> children;
    for (const auto& [program, path] : references(
             call(bus_->bus_->connection.get(), program_, path_, accessible, "GetChildren"))) {
        if (path != nullPath) {
            children.emplace_back(bus_, program, path);
        }
    }
    return children;
}

std::optional<Control> Control::parent() const {
    const Answer answer =
        property(bus_->bus_->connection.get(), program_, path_, accessible, "Parent");
    const gchar* program = nullptr;
    const gchar* path = nullptr;
    g_variant_get(answer.get(), "(&s&o)", &program, &path);
    if (std::string(path) == nullPath) {
        return std::nullopt;
    }
    return Control(bus_, program, path);
}

bool Control::is(ControlState state) const {
    const Answer answer =
        call(bus_->bus_->connection.get(), program_, path_, accessible, "GetState");
    GVariantIter* words = nullptr;
    g_variant_get(answer.get(), "(au)", &words);
    std::uint64_t bits = 0;
    guint32 word = 0;
    for (unsigned shift = 0; g_variant_iter_next(words, "u", &word) && shift < 64; shift += 32) {
        bits |= static_cast<std::uint64_t>(word) << shift;
    }
    g_variant_iter_free(words);
    return ((bits >> static_cast<unsigned>(state)) & 1U) != 0;
}

Rectangle Control::extents() const {
    constexpr guint32 onScreen = 0;
    const Answer answer = call(bus_->bus_->connection.get(), program_, path_, component,
                               "GetExtents", g_variant_new("(u)", onScreen));
    Rectangle place;
    g_variant_get(answer.get(), "((iiii))", &place.x, &place.y, &place.width, &place.height);
    return place;
}

std::string Control::text() const {
    constexpr gint32 end = -1;
    return onlyText(call(bus_->bus_->connection.get(), program_, path_, textInterface, "GetText",
                         g_variant_new("(ii)", 0, end)));
}

double Control::value() const {
    return g_variant_get_double(
        property(bus_->bus_->connection.get(), program_, path_, valueInterface, "CurrentValue")
            .get());
}

int Control::valueChanges() const {
    const std::lock_guard lock(bus_->bus_->mutex);
    return bus_->bus_->changes[program_ + path_];
}

double Control::maximum() const {
    return g_variant_get_double(
        property(bus_->bus_->connection.get(), program_, path_, valueInterface, "MaximumValue")
            .get());
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

std::string outline(const Control& control) {
    std::ostringstream out;
    outlineInto(out, control, 0);
    return out.str();
}

} // namespace vistrane
