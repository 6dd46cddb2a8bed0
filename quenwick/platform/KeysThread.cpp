#include "quenwick/platform/KeysThread.h"

#include <chrono>

#include "quenwick/platform/Seal_openssl.h"
#include "quenwick/platform/Thread.h"

namespace quenwick::platform {
namespace {

constexpr std::chrono::seconds kPatienceAtExit(1);

SerialThread& makeThread() {
  auto& thread = *new SerialThread("quenwick-keys");
  // It seals with OpenSSL. If the host has that torn down, then after this thread's end: what is
  // set up first is torn down last.
  prepareSealing();
  if (!atProcessExit([] { keysThread().end(kPatienceAtExit); })) thread.end({});
  return thread;
}

}  // namespace

SerialThread& keysThread() {
  static auto& instance = makeThread();
  return instance;
}

}  // namespace quenwick::platform
