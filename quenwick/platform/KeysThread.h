#pragma once

#include <type_traits>

#include "quenwick/platform/SerialThread.h"
#include "quenwick/platform/Task.h"

namespace quenwick::platform {

/// The thread on which secrets are read and written, in order; its own, so that a slow keyring
/// delays nothing else. At exit, what was handed over is finished first, for a second at most.
SerialThread& keysThread();

/// Runs the work on that thread, where it may use the keychain without blocking another; the
/// awaiting task goes on on the pool with what the work returns or throws.
template <class Run>
auto onKeysThread(Run run) {
  using Result = std::invoke_result_t<Run>;
  return suspend<Result>([run = std::move(run)](Continuation<Result> continuation) {
    keysThread().post([run, continuation] { continuation.resumeWith(run); });
  });
}

}  // namespace quenwick::platform
