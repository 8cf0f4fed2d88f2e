#include "tests/desktop/AppearancePortal.h"

#include <atomic>
#include <future>
#include <stdexcept>
#include <thread>

#include <gio/gio.h>

namespace vistrane {

namespace {

constexpr char portalName[] = "org.freedesktop.portal.Desktop";
constexpr char portalPath[] = "/org/freedesktop/portal/desktop";
constexpr char settingsInterface[] = "org.freedesktop.portal.Settings";
constexpr char appearance[] = "org.freedesktop.appearance";
constexpr char colorScheme[] = "color-scheme";

constexpr char description[] = R"(
<node>
  <interface name="org.freedesktop.portal.Settings">
    <method name="ReadAll">
      <arg name="namespaces" type="as" direction="in"/>
      <arg name="value" type="a{sa{sv}}" direction="out"/>
    </method>
    <method name="Read">
      <arg name="namespace" type="s" direction="in"/>
      <arg name="key" type="s" direction="in"/>
      <arg name="value" type="v" direction="out"/>
    </method>
    <method name="ReadOne">
      <arg name="namespace" type="s" direction="in"/>
      <arg name="key" type="s" direction="in"/>
      <arg name="value" type="v" direction="out"/>
    </method>
    <signal name="SettingChanged">
      <arg name="namespace" type="s"/>
      <arg name="key" type="s"/>
      <arg name="value" type="v"/>
    </signal>
    <property name="version" type="u" access="read"/>
  </interface>
</node>)";

GVariant* allOf(unsigned scheme) {
    GVariantBuilder keys;
    g_variant_builder_init(&keys, G_VARIANT_TYPE("a{sv}"));
    g_variant_builder_add(&keys, "{sv}", colorScheme, g_variant_new_uint32(scheme));
    GVariantBuilder spaces;
    g_variant_builder_init(&spaces, G_VARIANT_TYPE("a{sa{sv}}"));
    g_variant_builder_add(&spaces, "{sa{sv}}", appearance, &keys);
    return g_variant_new("(a{sa{sv}})", &spaces);
}

void answer(GDBusConnection* /*connection*/, const gchar* /*sender*/, const gchar* /*path*/,
            const gchar* /*interface*/, const gchar* method, GVariant* arguments,
            GDBusMethodInvocation* invocation, gpointer scheme) {
    const unsigned current = *static_cast<std::atomic<unsigned>*>(scheme);
    const std::string name = method;
    if (name == "ReadAll") {
        g_dbus_method_invocation_return_value(invocation, allOf(current));
        return;
    }
    const gchar* space = nullptr;
    const gchar* key = nullptr;
    g_variant_get(arguments, "(&s&s)", &space, &key);
    if (std::string(space) != appearance || std::string(key) != colorScheme) {
        g_dbus_method_invocation_return_dbus_error(
            invocation, "org.freedesktop.portal.Error.NotFound", "Requested setting not found");
        return;
    }
    GVariant* value = g_variant_new_variant(g_variant_new_uint32(current));
    // The older call wraps its answer twice.
    g_dbus_method_invocation_return_value(
        invocation, g_variant_new("(@v)", name == "Read" ? g_variant_new_variant(value) : value));
}

GVariant* propertyValue(GDBusConnection* /*connection*/, const gchar* /*sender*/,
                        const gchar* /*path*/, const gchar* /*interface*/,
                        const gchar* /*property*/, GError** /*error*/, gpointer /*scheme*/) {
    return g_variant_new_uint32(2);
}

constexpr GDBusInterfaceVTable table{answer, propertyValue, nullptr, {}};

} // namespace

class AppearancePortal::Service {
public:
    Service(const std::string& address, ColourScheme scheme)
        : scheme_(static_cast<unsigned>(scheme)) {
        std::promise<std::string> isReady;
        std::future<std::string> failure = isReady.get_future();
        thread_ = std::thread([this, address, &isReady] { run(address, isReady); });
        const std::string reason = failure.get();
        if (!reason.empty()) {
            thread_.join();
            throw std::runtime_error("no desktop portal: " + reason);
        }
    }
    ~Service() {
        g_main_context_invoke(
            context_,
            [](gpointer loop) -> gboolean {
                g_main_loop_quit(static_cast<GMainLoop*>(loop));
                return G_SOURCE_REMOVE;
            },
            loop_);
        thread_.join();
        g_main_loop_unref(loop_);
        g_main_context_unref(context_);
    }
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    void switchTo(ColourScheme scheme) {
        scheme_ = static_cast<unsigned>(scheme);
        g_dbus_connection_emit_signal(
            connection_, nullptr, portalPath, settingsInterface, "SettingChanged",
            g_variant_new("(ssv)", appearance, colorScheme, g_variant_new_uint32(scheme_)),
            nullptr);
        g_dbus_connection_flush_sync(connection_, nullptr, nullptr);
    }

private:
    void run(const std::string& address, std::promise<std::string>& isReady) {
        g_main_context_push_thread_default(context_);
        GError* error = nullptr;
        GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(description, &error);
        connection_ = node == nullptr ? nullptr
                                      : g_dbus_connection_new_for_address_sync(
                                            address.c_str(),
                                            static_cast<GDBusConnectionFlags>(
                                                G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
                                            nullptr, nullptr, &error);
        if (connection_ == nullptr || !offer(node, &error)) {
            isReady.set_value(error->message);
            g_error_free(error);
        } else {
            isReady.set_value("");
            g_main_loop_run(loop_);
        }
        if (connection_ != nullptr) {
            g_dbus_connection_close_sync(connection_, nullptr, nullptr);
            g_object_unref(connection_);
        }
        if (node != nullptr) {
            g_dbus_node_info_unref(node);
        }
        g_main_context_pop_thread_default(context_);
    }

    bool offer(GDBusNodeInfo* node, GError** error) {
        g_dbus_connection_set_exit_on_close(connection_, FALSE);
        if (g_dbus_connection_register_object(connection_, portalPath, node->interfaces[0], &table,
                                              &scheme_, nullptr, error) == 0) {
            return false;
        }
        GVariant* reply = g_dbus_connection_call_sync(
            connection_, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
            "RequestName", g_variant_new("(su)", portalName, 0U), nullptr, G_DBUS_CALL_FLAGS_NONE,
            -1, nullptr, error);
        if (reply == nullptr) {
            return false;
        }
        g_variant_unref(reply);
        return true;
    }

    std::atomic<unsigned> scheme_;
    GMainContext* context_ = g_main_context_new();
    GMainLoop* loop_ = g_main_loop_new(context_, FALSE);
    GDBusConnection* connection_ = nullptr;
    std::thread thread_;
};

AppearancePortal::AppearancePortal(const std::string& sessionAddress, ColourScheme scheme)
    : service_(std::make_unique<Service>(sessionAddress, scheme)) {}

AppearancePortal::~AppearancePortal() = default;

void AppearancePortal::switchTo(ColourScheme scheme) {
    service_->switchTo(scheme);
}

} // namespace vistrane
