#include "quenwick/platform/SecretBus_secret.h"

#include <libsecret/secret.h>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace quenwick::platform {
namespace {

constexpr std::string_view kKeyringName = "org.freedesktop.secrets";
constexpr std::string_view kKeyringPath = "/org/freedesktop/secrets";

GMainContext* ownContext() {
  static auto* context = g_main_context_new();
  return context;
}

/// GLib ends the process where it has no descriptor for a wait of its own: a host that has hardly
/// any left does without its keyring for a while.
void requireDescriptors() {
  std::array<int, 8> taken{};
  for (auto& descriptor : taken) descriptor = eventfd(0, EFD_CLOEXEC);
  bool areThere = std::ranges::all_of(taken, [](int descriptor) { return descriptor >= 0; });
  for (int descriptor : taken) {
    if (descriptor >= 0) close(descriptor);
  }
  if (!areThere) throw SecItemError(errSecNotAvailable, "the process has too many open files");
}

/// Whether programs of the session are told of a bus that runs: without one GLib would start it.
bool hasSessionBus() {
  if (const char* told = g_getenv("DBUS_SESSION_BUS_ADDRESS")) {
    std::string_view address(told);
    return !address.empty() && address.find("autolaunch:") == address.npos;
  }
  struct stat status{};
  auto socket = std::string(g_get_user_runtime_dir()) + "/bus";
  return ::stat(socket.c_str(), &status) == 0 && S_ISSOCK(status.st_mode) &&
         status.st_uid == ::geteuid();
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

constexpr const char* kRules[] = {
    "type='signal',sender='org.freedesktop.secrets',path_namespace='/org/freedesktop/secrets'",
    "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',"
    "arg0='org.freedesktop.secrets'"};

}  // namespace

void throwIfSet(GError* error) {
  if (!error) return;
  std::unique_ptr<GError, decltype(&g_error_free)> owned(error, &g_error_free);
  bool isLocked = g_error_matches(error, SECRET_ERROR, SECRET_ERROR_IS_LOCKED);
  throw SecItemError(isLocked ? errSecInteractionNotAllowed : errSecNotAvailable, error->message);
}

TimeLimit::TimeLimit(std::chrono::milliseconds limit)
    : cancellable_(g_cancellable_new(), [](GCancellable* object) { g_object_unref(object); }),
      timer_(postAfter(limit, pool(),
                       [cancellable = cancellable_] { g_cancellable_cancel(cancellable.get()); })) {
}

OwnMainContext::OwnMainContext() { g_main_context_push_thread_default(ownContext()); }

OwnMainContext::~OwnMainContext() {
  // Signals that the keyring's objects were sent meanwhile; nobody else hands them over.
  while (g_main_context_iteration(ownContext(), FALSE)) {
  }
  g_main_context_pop_thread_default(ownContext());
}

void Operation::end(GObject*, GAsyncResult* result, gpointer operation) {
  auto* kept = static_cast<GAsyncResult*>(g_object_ref(result));
  static_cast<Operation*>(operation)->result_.reset(kept);
}

GAsyncResult* Operation::wait() {
  while (!result_) g_main_context_iteration(ownContext(), TRUE);
  return result_.get();
}

GObjectPointer<GDBusConnection> connectToSessionBus(GCancellable* cancellable) {
  if (!hasSessionBus()) throw SecItemError(errSecNotAvailable, "there is no session bus");
  requireDescriptors();
  GError* error = nullptr;
  GObjectPointer<GDBusConnection> connection(
      g_bus_get_sync(G_BUS_TYPE_SESSION, cancellable, &error));
  throwIfSet(error);
  g_dbus_connection_set_exit_on_close(connection.get(), FALSE);
  if (g_dbus_connection_is_closed(connection.get())) {
    throw SecItemError(errSecNotAvailable, "the session bus is gone");
  }
  return connection;
}

KeyringSignals::KeyringSignals(GDBusConnection* connection, Receive receive,
                               GCancellable* cancellable)
    : connection_(static_cast<GDBusConnection*>(g_object_ref(connection))),
      filter_(
          g_dbus_connection_add_filter(connection, &pass, new Receive(std::move(receive)),
                                       [](gpointer data) { delete static_cast<Receive*>(data); })) {
  for (const char* rule : kRules) {
    Operation match;
    g_dbus_connection_call(connection, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                           "org.freedesktop.DBus", "AddMatch", g_variant_new("(s)", rule), nullptr,
                           G_DBUS_CALL_FLAGS_NONE, -1, cancellable, &Operation::end, &match);
    GError* error = nullptr;
    auto* answer = g_dbus_connection_call_finish(connection, match.wait(), &error);
    if (answer) g_variant_unref(answer);
    if (error) g_dbus_connection_remove_filter(connection, filter_);
    throwIfSet(error);
  }
}

KeyringSignals::~KeyringSignals() {
  g_dbus_connection_remove_filter(connection_.get(), filter_);
  for (const char* rule : kRules) {
    g_dbus_connection_call(connection_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                           "org.freedesktop.DBus", "RemoveMatch", g_variant_new("(s)", rule),
                           nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr, nullptr);
  }
}

}  // namespace quenwick::platform
