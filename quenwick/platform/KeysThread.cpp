#include "quenwick/platform/KeysThread.h"

#include <chrono>

#include "quenwick/platform/Thread.h"

namespace quenwick::platform {
namespace {

constexpr std::chrono::seconds kPatienceAtExit(1);

SerialThread& makeThread() {
  auto& thread = *new SerialThread("quenwick-keys");
  atProcessExit([] { keysThread().drain(kPatienceAtExit); });
  return thread;
}

}  // namespace

SerialThread& keysThread() {
  static auto& instance = makeThread();
  return instance;
}

}  // namespace quenwick::platform
