#include "quenwick/platform/KeysThread.h"

#include <chrono>

#include "quenwick/platform/Thread.h"

namespace quenwick::platform {
namespace {

constexpr std::chrono::seconds kPatienceAtExit(1);

SerialThread& makeThread() {
  auto& thread = *new SerialThread("quenwick-keys");
  // It seals with OpenSSL, which the host may have torn down next.
  atProcessExit([] { keysThread().end(kPatienceAtExit); });
  return thread;
}

}  // namespace

SerialThread& keysThread() {
  static auto& instance = makeThread();
  return instance;
}

}  // namespace quenwick::platform
