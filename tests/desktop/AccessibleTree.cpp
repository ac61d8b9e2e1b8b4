#include "tests/desktop/AccessibleTree.h"

#include <gio/gio.h>

#include <algorithm>
#include <stdexcept>
#include <thread>
#include <utility>

namespace orvane::test {

namespace {

constexpr int kLongestCall = 2000;  // milliseconds
constexpr const char *kAccessible = "org.a11y.atspi.Accessible";
constexpr const char *kRoot = "/org/a11y/atspi/accessible/root";
constexpr const char *kNull = "/org/a11y/atspi/null";

std::shared_ptr<GDBusConnection> connectTo(const std::string &address) {
  GDBusConnection *connection = g_dbus_connection_new_for_address_sync(
      address.c_str(),
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
      nullptr, nullptr, nullptr);
  if (connection == nullptr)
    throw std::runtime_error("no bus at " + address);
  g_dbus_connection_set_exit_on_close(connection, FALSE);
  const auto release = [](GDBusConnection *held) { g_object_unref(held); };
  return {connection, release};
}

std::unique_ptr<GVariant, void (*)(GVariant *)> held(GVariant *variant) {
  return {variant, [](GVariant *mine) {
            if (mine != nullptr)
              g_variant_unref(mine);
          }};
}

std::string textAt(GVariant *tuple, gsize index) {
  const auto child = held(g_variant_get_child_value(tuple, index));
  return g_variant_get_string(child.get(), nullptr);
}

}  // namespace

Accessible::Accessible(std::shared_ptr<GDBusConnection> connection, std::string owner,
                       std::string path)
    : mConnection(std::move(connection)), mOwner(std::move(owner)), mPath(std::move(path)) {}

Accessible::Reply Accessible::call(const char *interface, const char *operation,
                                   GVariant *arguments) const {
  const auto sunk = held(arguments == nullptr ? nullptr : g_variant_ref_sink(arguments));
  if (!exists())
    return held(nullptr);
  return held(g_dbus_connection_call_sync(
      mConnection.get(), mOwner.c_str(), mPath.c_str(), interface, operation, sunk.get(), nullptr,
      G_DBUS_CALL_FLAGS_NO_AUTO_START, kLongestCall, nullptr, nullptr));
}

Accessible::Reply Accessible::property(const char *interface, const char *name) const {
  const Reply reply =
      call("org.freedesktop.DBus.Properties", "Get", g_variant_new("(ss)", interface, name));
  if (!reply || !g_variant_is_of_type(reply.get(), G_VARIANT_TYPE("(v)")))
    return held(nullptr);
  const auto boxed = held(g_variant_get_child_value(reply.get(), 0));
  return held(g_variant_get_variant(boxed.get()));
}

std::string Accessible::textProperty(const char *name) const {
  const Reply value = property(kAccessible, name);
  return value && g_variant_is_of_type(value.get(), G_VARIANT_TYPE_STRING)
             ? g_variant_get_string(value.get(), nullptr)
             : std::string();
}

std::string Accessible::name() const {
  return textProperty("Name");
}

std::string Accessible::description() const {
  return textProperty("Description");
}

std::string Accessible::identity() const {
  return textProperty("AccessibleId");
}

std::string Accessible::role() const {
  const Reply reply = call(kAccessible, "GetRoleName", nullptr);
  return reply ? textAt(reply.get(), 0) : std::string();
}

std::string Accessible::text() const {
  const Reply reply = call("org.a11y.atspi.Text", "GetText", g_variant_new("(ii)", 0, -1));
  return reply ? textAt(reply.get(), 0) : std::string();
}

std::optional<double> Accessible::value() const {
  const Reply value = property("org.a11y.atspi.Value", "CurrentValue");
  if (!value || !g_variant_is_of_type(value.get(), G_VARIANT_TYPE_DOUBLE))
    return std::nullopt;
  return g_variant_get_double(value.get());
}

bool Accessible::is(AccessibleState state) const {
  const Reply reply = call(kAccessible, "GetState", nullptr);
  if (!reply)
    return false;
  const auto words = held(g_variant_get_child_value(reply.get(), 0));
  const auto bit = static_cast<unsigned>(state);
  if (g_variant_n_children(words.get()) <= bit / 32)
    return false;
  const auto word = held(g_variant_get_child_value(words.get(), bit / 32));
  return (g_variant_get_uint32(word.get()) >> (bit % 32) & 1U) != 0;
}

QRect Accessible::extents() const {
  constexpr guint32 kOfScreen = 0;
  const Reply reply =
      call("org.a11y.atspi.Component", "GetExtents", g_variant_new("(u)", kOfScreen));
  if (!reply)
    return {};
  gint32 x = 0;
  gint32 y = 0;
  gint32 width = 0;
  gint32 height = 0;
  g_variant_get(reply.get(), "((iiii))", &x, &y, &width, &height);
  return {x, y, width, height};
}

std::vector<Accessible> Accessible::children() const {
  const Reply reply = call(kAccessible, "GetChildren", nullptr);
  if (!reply)
    return {};
  return objects(held(g_variant_get_child_value(reply.get(), 0)).get());
}

std::vector<Accessible> Accessible::related(AccessibleRelation relation) const {
  const Reply reply = call(kAccessible, "GetRelationSet", nullptr);
  if (!reply)
    return {};
  const auto relations = held(g_variant_get_child_value(reply.get(), 0));
  for (gsize k = 0; k < g_variant_n_children(relations.get()); ++k) {
    const auto pair = held(g_variant_get_child_value(relations.get(), k));
    const auto kind = held(g_variant_get_child_value(pair.get(), 0));
    if (g_variant_get_uint32(kind.get()) == static_cast<guint32>(relation))
      return objects(held(g_variant_get_child_value(pair.get(), 1)).get());
  }
  return {};
}

std::vector<Accessible> Accessible::objects(GVariant *list) const {
  std::vector<Accessible> objects;
  for (gsize k = 0; k < g_variant_n_children(list); ++k) {
    const auto object = held(g_variant_get_child_value(list, k));
    std::string path = textAt(object.get(), 1);
    if (path != kNull)
      objects.emplace_back(mConnection, textAt(object.get(), 0), std::move(path));
  }
  return objects;
}

std::vector<std::string> Accessible::actions() const {
  const Reply reply = call("org.a11y.atspi.Action", "GetActions", nullptr);
  std::vector<std::string> names;
  if (!reply)
    return names;
  const auto list = held(g_variant_get_child_value(reply.get(), 0));
  for (gsize k = 0; k < g_variant_n_children(list.get()); ++k) {
    const auto action = held(g_variant_get_child_value(list.get(), k));
    names.push_back(textAt(action.get(), 0));
  }
  return names;
}

bool Accessible::doAction(const std::string &action) const {
  const std::vector<std::string> names = actions();
  const auto found = std::ranges::find(names, action);
  const auto index = static_cast<gint32>(found - names.begin());
  return found != names.end() &&
         call("org.a11y.atspi.Action", "DoAction", g_variant_new("(i)", index)) != nullptr;
}

bool Accessible::grabFocus() const {
  return call("org.a11y.atspi.Component", "GrabFocus", nullptr) != nullptr;
}

bool Accessible::setText(const std::string &text) const {
  return call("org.a11y.atspi.EditableText", "SetTextContents",
              g_variant_new("(s)", text.c_str())) != nullptr;
}

bool Accessible::setValue(double value) const {
  return call("org.freedesktop.DBus.Properties", "Set",
              g_variant_new("(ssv)", "org.a11y.atspi.Value", "CurrentValue",
                            g_variant_new_double(value))) != nullptr;
}

Accessible Accessible::find(const std::function<bool(const Accessible &)> &isWanted) const {
  for (const Accessible &child : children()) {
    if (isWanted(child))
      return child;
    if (Accessible inside = child.find(isWanted); inside.exists())
      return inside;
  }
  return {};
}

Accessible Accessible::findNamed(const std::string &name, const std::string &role) const {
  return find([&](const Accessible &object) {
    return object.name() == name && (role.empty() || object.role() == role);
  });
}

AccessibleTree::AccessibleTree(const Desktop &desktop) {
  // Asking for the bus starts it.
  const auto session = connectTo(desktop.sessionBus());
  const auto reply = held(g_dbus_connection_call_sync(
      session.get(), "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", nullptr,
      G_VARIANT_TYPE("(s)"), G_DBUS_CALL_FLAGS_NONE, 5 * kLongestCall, nullptr, nullptr));
  if (!reply)
    throw std::runtime_error("no accessibility bus");
  mConnection = connectTo(textAt(reply.get(), 0));
  // The list of the programs is kept by a program of its own; the first call starts that.
  const auto started = held(g_dbus_connection_call_sync(
      mConnection.get(), "org.a11y.atspi.Registry", kRoot, kAccessible, "GetRoleName", nullptr,
      nullptr, G_DBUS_CALL_FLAGS_NONE, 5 * kLongestCall, nullptr, nullptr));
  if (!started)
    throw std::runtime_error("no accessibility registry");
}

std::vector<Accessible> AccessibleTree::applications() const {
  return Accessible(mConnection, "org.a11y.atspi.Registry", kRoot).children();
}

std::vector<AccessibleTree::Event> AccessibleTree::eventsWithin(
    std::chrono::milliseconds time) const {
  // Programs tell nothing that nobody has asked for.
  held(g_dbus_connection_call_sync(mConnection.get(), "org.a11y.atspi.Registry",
                                   "/org/a11y/atspi/registry", "org.a11y.atspi.Registry",
                                   "RegisterEvent", g_variant_new("(s)", "object:"), nullptr,
                                   G_DBUS_CALL_FLAGS_NONE, kLongestCall, nullptr, nullptr));
  std::vector<Event> events;
  struct Listener {
    const std::shared_ptr<GDBusConnection> &connection;
    std::vector<Event> &events;
  } listener{mConnection, events};
  const auto keep = [](GDBusConnection *, const gchar *sender, const gchar *path, const gchar *,
                       const gchar *member, GVariant *arguments, gpointer data) {
    std::string kind = member;
    if (const std::string detail = textAt(arguments, 0); !detail.empty())
      kind += " " + detail;
    const auto &mine = *static_cast<Listener *>(data);
    mine.events.push_back({Accessible(mine.connection, sender, path), kind});
  };
  const guint subscription = g_dbus_connection_signal_subscribe(
      mConnection.get(), nullptr, "org.a11y.atspi.Event.Object", nullptr, nullptr, nullptr,
      G_DBUS_SIGNAL_FLAGS_NONE, keep, &listener, nullptr);
  const auto end = std::chrono::steady_clock::now() + time;
  while (std::chrono::steady_clock::now() < end) {
    if (!g_main_context_iteration(nullptr, FALSE))
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  g_dbus_connection_signal_unsubscribe(mConnection.get(), subscription);
  return events;
}

Accessible AccessibleTree::application(const std::string &name) const {
  for (const Accessible &application : applications()) {
    if (application.name() == name)
      return application;
  }
  return {};
}

}  // namespace orvane::test
