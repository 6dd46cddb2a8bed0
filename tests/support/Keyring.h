#pragma once

#include <memory>
#include <string>

#include "tests/support/Daemon.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenwick::tests {

/// A D-Bus session of the test's own with a keyring on it, unlocked by a throw-away password. All
/// that they keep lies in a folder of its own.
class Keyring {
 public:
  Keyring();
  ~Keyring();

  void lock();
  void unlock();

  /// Ends the keyring; starts it again, unlocked, with what it keeps.
  void kill();
  void start();

  /// The bus: all that is on it loses its connection when it is killed.
  Daemon& bus() { return *bus_; }
  Daemon& daemon() { return *keyring_; }
  const std::string& address() const { return address_; }

 private:
  TemporaryDirectory folder_;
  std::unique_ptr<Daemon> bus_;
  std::unique_ptr<Daemon> keyring_;
  std::string address_;
};

/// While it lives, this process and its children find that session bus; none with an empty address.
class SessionBus {
 public:
  explicit SessionBus(const std::string& address);
  ~SessionBus();
  SessionBus(const SessionBus&) = delete;
  SessionBus& operator=(const SessionBus&) = delete;

 private:
  std::string before_;
  std::string runtimeBefore_;
};

}  // namespace quenwick::tests
