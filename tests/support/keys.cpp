// A host that keeps secrets: keys HOME secretService|sealedFile WHAT
//   write PREFIX  writes 20 items "PREFIX0", ... with "value of PREFIX0", ..., and exits with the
//                 number of those that were not stored
//   die           writes the item "kept" and is killed by SIGKILL once that is reported stored
//   loop          writes the item "kept", prints "ready" and runs a GLib main loop, in which it
//                 writes on; once the session bus is gone it prints what the item reads as, and
//                 exits

#include <gio/gio.h>

#include <csignal>
#include <cstdio>
#include <string>

#include "quenwick/platform/HostConfiguration.h"
#include "quenwick/platform/SecItem.h"

using namespace quenwick::platform;

namespace {

SecItemQuery item(const std::string& account) {
  return {.kSecAttrService = "com.example.keys", .kSecAttrAccount = account};
}

bool write(const std::string& account, const std::string& value) {
  auto full = item(account);
  full.kSecValueData = value;
  auto status = SecItemAdd(full);
  if (status == errSecDuplicateItem) {
    status = SecItemUpdate(item(account), {.kSecValueData = value});
  }
  return status == errSecSuccess;
}

std::string read(const std::string& account) {
  auto query = item(account);
  query.kSecReturnData = true;
  std::optional<Bytes> data;
  SecItemCopyMatching(query, data);
  return data.value_or("none");
}

/// Whether it succeeds at last: a keyring that is busy may need more than its second.
template <class Try>
bool succeeds(Try once) {
  for (int tries = 0; tries < 10; ++tries) {
    if (once()) return true;
  }
  return false;
}

bool isStored(const std::string& account, const std::string& value) {
  return succeeds([&] { return write(account, value); });
}

bool isRead(const std::string& account, const std::string& value) {
  return succeeds([&] { return read(account) == value; });
}

int writeMany(const std::string& prefix) {
  int failures = 0;
  for (int i = 0; i < 20; ++i) {
    auto account = prefix + std::to_string(i);
    if (!isStored(account, "value of " + account)) ++failures;
  }
  return failures;
}

int runLoop() {
  // The host's own use of the bus, as any desktop program has it: of the one connection that a
  // process has, and which ends it with the bus unless somebody has said otherwise.
  auto* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
  if (!bus || !isStored("kept", "a secret") || !isRead("kept", "a secret")) return 3;
  auto* loop = g_main_loop_new(nullptr, FALSE);
  auto writeOn = [](gpointer) -> gboolean { return write("other", "x") || G_SOURCE_CONTINUE; };
  g_timeout_add(10, writeOn, nullptr);
  // After what GLib itself does about the end.
  auto end =
      +[](GDBusConnection*, gboolean, GError*, GMainLoop* running) { g_main_loop_quit(running); };
  g_signal_connect_after(bus, "closed", G_CALLBACK(end), loop);
  std::puts("ready");
  std::fflush(stdout);
  g_main_loop_run(loop);
  g_main_loop_unref(loop);
  if (write("other", "y")) return 4;
  std::puts(read("kept").c_str());
  return 0;
}

}  // namespace

int main(int count, char** words) {
  if (count < 4) return 2;
  bool isSealed = std::string(words[2]) == "sealedFile";
  configureHost(
      {.bundleIdentifier = "com.example.keys",
       .home = words[1],
       .keychain = isSealed ? SecItemBackendKind::sealedFile : SecItemBackendKind::secretService});
  std::string what = words[3];
  if (what == "write" && count == 5) return writeMany(words[4]);
  if (what == "loop") return runLoop();
  if (!isStored("kept", "a secret")) return 3;
  raise(SIGKILL);
}
