#include "quenwick/platform/SecretBus_secret.h"

#include <libsecret/secret.h>

#include <chrono>
#include <string_view>
#include <utility>

namespace quenwick::platform {
namespace {

constexpr std::chrono::seconds kPatience(1);
constexpr std::string_view kKeyringName = "org.freedesktop.secrets";
constexpr std::string_view kKeyringPath = "/org/freedesktop/secrets";

struct FreeText {
  void operator()(char* text) const { g_free(text); }
};
using GText = std::unique_ptr<char, FreeText>;

GMainContext* ownContext() {
  static auto* context = g_main_context_new();
  return context;
}

bool isMissingBus(std::string_view address) {
  return address.empty() || address.find("autolaunch:") != address.npos;
}

/// Where the session's bus is, as its programs are told; never a request to start one.
std::string sessionBusAddress() {
  if (const char* told = g_getenv("DBUS_SESSION_BUS_ADDRESS")) {
    return isMissingBus(told) ? std::string() : told;
  }
  const char* folder = g_getenv("XDG_RUNTIME_DIR");
  auto socket = folder && *folder ? std::string(folder) + "/bus" : std::string();
  if (socket.empty() || !g_file_test(socket.c_str(), G_FILE_TEST_EXISTS)) return {};
  GText escaped(g_dbus_address_escape_value(socket.c_str()));
  return std::string("unix:path=") + escaped.get();
}

using Receive = std::function<void(bool)>;

std::string_view orEmpty(const char* text) { return text ? text : ""; }

GDBusMessage* pass(GDBusConnection*, GDBusMessage* message, gboolean isIncoming, gpointer data) {
  if (!isIncoming || g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_SIGNAL) {
    return message;
  }
  bool isOwnerChange = orEmpty(g_dbus_message_get_member(message)) == "NameOwnerChanged" &&
                       orEmpty(g_dbus_message_get_arg0(message)) == kKeyringName;
  bool isOfKeyring = orEmpty(g_dbus_message_get_path(message)).starts_with(kKeyringPath);
  if (isOwnerChange || isOfKeyring) (*static_cast<const Receive*>(data))(isOwnerChange);
  return message;
}

void addMatch(GDBusConnection* connection, const char* rule, GCancellable* cancellable) {
  GError* error = nullptr;
  auto* answer =
      g_dbus_connection_call_sync(connection, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                  "org.freedesktop.DBus", "AddMatch", g_variant_new("(s)", rule),
                                  nullptr, G_DBUS_CALL_FLAGS_NONE, -1, cancellable, &error);
  if (answer) g_variant_unref(answer);
  throwIfSet(error);
}

}  // namespace

void throwIfSet(GError* error) {
  if (!error) return;
  std::unique_ptr<GError, decltype(&g_error_free)> owned(error, &g_error_free);
  bool isLocked = g_error_matches(error, SECRET_ERROR, SECRET_ERROR_IS_LOCKED);
  throw SecItemError(isLocked ? errSecInteractionNotAllowed : errSecNotAvailable, error->message);
}

OneSecond::OneSecond()
    : cancellable_(g_cancellable_new(), [](GCancellable* object) { g_object_unref(object); }),
      timer_(postAfter(kPatience, pool(),
                       [cancellable = cancellable_] { g_cancellable_cancel(cancellable.get()); })) {
}

OwnMainContext::OwnMainContext() { g_main_context_push_thread_default(ownContext()); }

OwnMainContext::~OwnMainContext() {
  // Signals that the keyring's objects were sent meanwhile; nobody else hands them over.
  while (g_main_context_iteration(ownContext(), FALSE)) {
  }
  g_main_context_pop_thread_default(ownContext());
}

GObjectPointer<GDBusConnection> connectToSessionBus(GCancellable* cancellable) {
  auto address = sessionBusAddress();
  if (address.empty()) throw SecItemError(errSecNotAvailable, "there is no session bus");
  constexpr auto kFlags =
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
  GError* error = nullptr;
  GObjectPointer<GDBusConnection> connection(g_dbus_connection_new_for_address_sync(
      address.c_str(), kFlags, nullptr, cancellable, &error));
  throwIfSet(error);
  g_dbus_connection_set_exit_on_close(connection.get(), FALSE);
  return connection;
}

void observeKeyring(GDBusConnection* connection, Receive receive, GCancellable* cancellable) {
  g_dbus_connection_add_filter(connection, &pass, new Receive(std::move(receive)),
                               [](gpointer data) { delete static_cast<Receive*>(data); });
  addMatch(connection,
           "type='signal',sender='org.freedesktop.secrets',"
           "path_namespace='/org/freedesktop/secrets'",
           cancellable);
  addMatch(connection,
           "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',"
           "arg0='org.freedesktop.secrets'",
           cancellable);
}

}  // namespace quenwick::platform
