#include "tests/support/Keyring.h"

#include <gio/gio.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace quenwick::tests {
namespace {

constexpr auto kPassword = "a throw-away password";
constexpr auto kName = "org.freedesktop.secrets";
constexpr auto kPath = "/org/freedesktop/secrets";
constexpr auto kService = "org.freedesktop.Secret.Service";
constexpr auto kCollection = "/org/freedesktop/secrets/collection/login";

struct Release {
  void operator()(GDBusConnection* connection) const { g_object_unref(connection); }
  void operator()(GVariant* value) const { g_variant_unref(value); }
};
using Connection = std::unique_ptr<GDBusConnection, Release>;
using Variant = std::unique_ptr<GVariant, Release>;

Connection connect(const std::string& address) {
  return Connection(g_dbus_connection_new_for_address_sync(
      address.c_str(),
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
      nullptr, nullptr, nullptr));
}

Variant call(const Connection& connection, const char* interface, const char* method,
             GVariant* parameters) {
  return Variant(g_dbus_connection_call_sync(connection.get(), kName, kPath, interface, method,
                                             parameters, nullptr, G_DBUS_CALL_FLAGS_NONE, 60'000,
                                             nullptr, nullptr));
}

bool hasPlaceForSecrets(const Connection& connection) {
  auto answer = call(connection, kService, "ReadAlias", g_variant_new("(s)", "default"));
  if (!answer) return false;
  const char* path = nullptr;
  g_variant_get(answer.get(), "(&o)", &path);
  return std::string(path) == kCollection;
}

}  // namespace

Keyring::Keyring() {
  auto configuration = folder_.path() / "bus.conf";
  std::ofstream(configuration)
      << "<busconfig><type>session</type><listen>unix:path=" << (folder_.path() / "bus").string()
      << R"(</listen><auth>EXTERNAL</auth><policy context="default"><allow send_destination="*"/>)"
      << R"(<allow receive_sender="*"/><allow own="*"/></policy></busconfig>)";
  bus_ = std::make_unique<Daemon>(std::vector<std::string>{
      "dbus-daemon", "--config-file=" + configuration.string(), "--nofork", "--print-address=1"});
  address_ = bus_->line().value_or("");
  if (address_.empty()) throw std::runtime_error("the bus did not start");
  start();
}

Keyring::~Keyring() = default;

void Keyring::start() {
  std::vector<std::string> words{"env", "DBUS_SESSION_BUS_ADDRESS=" + address_};
  for (auto name :
       {"HOME", "XDG_RUNTIME_DIR", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"}) {
    words.push_back(std::string(name) + "=" + folder_.path().string());
  }
  for (auto word : {"gnome-keyring-daemon", "--foreground", "--components=secrets", "--unlock"}) {
    words.emplace_back(word);
  }
  words.push_back("--control-directory=" + folder_.path().string());
  keyring_ = std::make_unique<Daemon>(words);
  keyring_->tell(kPassword);
  keyring_->endInput();
  auto connection = connect(address_);
  for (int i = 0; i < 30'000; ++i) {
    if (hasPlaceForSecrets(connection)) return;
    usleep(1000);
  }
  throw std::runtime_error("the keyring did not start");
}

void Keyring::kill() { keyring_->kill(); }

void Keyring::lock() {
  const char* paths[] = {kCollection};
  if (!call(connect(address_), kService, "Lock",
            g_variant_new("(@ao)", g_variant_new_objv(paths, 1)))) {
    throw std::runtime_error("the keyring was not locked");
  }
}

// As the session's log-in does it; asking the keyring to unlock would ask a person.
void Keyring::unlock() {
  auto connection = connect(address_);
  auto session = call(connection, kService, "OpenSession",
                      g_variant_new("(sv)", "plain", g_variant_new_string("")));
  if (!session) throw std::runtime_error("the keyring opens no session");
  GVariant* unused = nullptr;
  const char* path = nullptr;
  g_variant_get(session.get(), "(@v&o)", &unused, &path);
  Variant owned(unused);
  auto bytes = [](const std::string& text) {
    return g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, text.data(), text.size(), 1);
  };
  auto done = call(
      connection, "org.gnome.keyring.InternalUnsupportedGuiltRiddenInterface",
      "UnlockWithMasterPassword",
      g_variant_new("(o(o@ay@ays))", kCollection, path, bytes(""), bytes(kPassword), "text/plain"));
  if (!done) throw std::runtime_error("the keyring was not unlocked");
}

SessionBus::SessionBus(const std::string& address) {
  auto value = [](const char* name) { return std::string(getenv(name) ? getenv(name) : ""); };
  before_ = value("DBUS_SESSION_BUS_ADDRESS");
  runtimeBefore_ = value("XDG_RUNTIME_DIR");
  unsetenv("XDG_RUNTIME_DIR");
  if (address.empty()) {
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
  } else {
    setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
  }
}

SessionBus::~SessionBus() {
  auto restore = [](const char* name, const std::string& value) {
    value.empty() ? unsetenv(name) : setenv(name, value.c_str(), 1);
  };
  restore("DBUS_SESSION_BUS_ADDRESS", before_);
  restore("XDG_RUNTIME_DIR", runtimeBefore_);
}

}  // namespace quenwick::tests
