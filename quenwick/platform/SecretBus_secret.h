#pragma once

#include <gio/gio.h>

#include <functional>
#include <memory>
#include <string>

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

/// Has blocking calls of GLib end, with an error, one second after its construction.
class OneSecond {
 public:
  OneSecond();
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

/// A connection to the user's session bus that is the library's alone: the host's, and what the
/// host has set up for its end, are not touched. No bus is ever started for it. Throws
/// `SecItemError`.
GObjectPointer<GDBusConnection> connectToSessionBus(GCancellable* cancellable);

/// Calls `receive` for every signal of the keyring, on GLib's own thread, and with true once the
/// keyring has come or gone. Throws `SecItemError`.
void observeKeyring(GDBusConnection* connection, std::function<void(bool isOwnerChange)> receive,
                    GCancellable* cancellable);

}  // namespace quenwick::platform
