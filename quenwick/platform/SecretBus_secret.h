#pragma once

#include <gio/gio.h>

#include <chrono>
#include <functional>
#include <memory>

#include "quenwick/platform/Executor.h"
#include "quenwick/platform/SecItemBackend.h"

namespace quenwick::platform {

struct ReleaseGObject {
  void operator()(void* object) const { g_object_unref(object); }
};
template <class T>
using GObjectPointer = std::unique_ptr<T, ReleaseGObject>;

/// Throws the error as a `SecItemError`; nothing happens where there is none.
void throwIfSet(GError* error);

/// Has operations of GLib end, with an error, so long after its construction.
class TimeLimit {
 public:
  explicit TimeLimit(std::chrono::milliseconds limit);
  GCancellable* cancellable() const { return cancellable_.get(); }

 private:
  std::shared_ptr<GCancellable> cancellable_;
  Cancellable timer_;
};

/// While it lives, what this thread asks of GLib belongs to a main context of the library's own,
/// never to the host's. One thread at a time.
class OwnMainContext {
 public:
  OwnMainContext();
  ~OwnMainContext();
  OwnMainContext(const OwnMainContext&) = delete;
  OwnMainContext& operator=(const OwnMainContext&) = delete;
};

/// One asynchronous operation of GLib, waited for on the own main context, one of which must live.
/// GLib's blocking calls would end the process where it has no descriptor for their wait.
class Operation {
 public:
  Operation() = default;
  Operation(const Operation&) = delete;
  Operation& operator=(const Operation&) = delete;

  /// What the operation is begun with; the data is this object.
  static void end(GObject* source, GAsyncResult* result, gpointer operation);
  /// Its result, once it has ended.
  GAsyncResult* wait();

 private:
  GObjectPointer<GAsyncResult> result_;
};

/// The process's connection to the user's session bus, whose end will not end the process; a bus
/// that is not there is not started. Throws `SecItemError`.
GObjectPointer<GDBusConnection> connectToSessionBus(GCancellable* cancellable);

/// While it lives, calls `receive` for every signal of the keyring, on GLib's own thread; with true
/// where the keyring has come or gone.
class KeyringSignals {
 public:
  /// Throws `SecItemError`.
  KeyringSignals(GDBusConnection* connection, std::function<void(bool isOwnerChange)> receive,
                 GCancellable* cancellable);
  ~KeyringSignals();
  KeyringSignals(const KeyringSignals&) = delete;
  KeyringSignals& operator=(const KeyringSignals&) = delete;

 private:
  GObjectPointer<GDBusConnection> connection_;
  guint filter_;
};

}  // namespace quenwick::platform
