#pragma once

#include <functional>
#include <thread>

namespace quenwick::platform {

/// Starts a thread of the library's own: named, and with every signal blocked, so that the host's
/// handlers run on the host's threads. `name` has at most 15 characters and outlives the thread.
/// Throws `std::system_error` where the system has no room for one.
std::thread startThread(const char* name, std::function<void()> run);

/// The same for a thread that nobody waits for. False where the system has no room for one, which
/// is logged once.
bool startDetachedThread(const char* name, std::function<void()> run);

/// Calls `stop` once when the process exits, before what was set up earlier is torn down. A child
/// made by fork does not call it: it has none of the parent's threads. `stop` must be bounded.
/// False where the exit has begun: what would have to be stopped must not begin any more.
bool atProcessExit(void (*stop)());

}  // namespace quenwick::platform
