#include "quenwick/client/HookLog.h"

#include "quenwick/client/HostCalls.h"
#include "quenwick/platform/Executor.h"
#include "quenwick/platform/KeysThread.h"
#include "quenwick/platform/Writer.h"

namespace quenwick {
namespace {

thread_local bool isInHook = false;

void call(const HookLog::Hook& hook, const platform::LogEntry& entry) {
  // Set back only after the call has ended: the line about what the hook throws must not reach it.
  struct Inside {
    Inside() { isInHook = true; }
    ~Inside() { isInHook = false; }
  } inside;
  bool isCalled = HostCalls::shared().run([&] { hook(entry.level, entry.message); });
  // The host takes nothing any more; what went wrong is not lost.
  if (!isCalled) platform::StandardErrorLog(platform::LogLevel::error).write(entry);
}

bool mayBeWaitedFor() {
  return platform::writer().isCurrent() || platform::keysThread().isCurrent();
}

}  // namespace

void HookLog::write(const platform::LogEntry& entry) {
  if (isInHook) return platform::StandardErrorLog().write(entry);
  if (!mayBeWaitedFor()) return call(*hook_, entry);
  static auto& strand = *new auto(platform::makeStrand());
  strand->post([hook = hook_, entry] { call(*hook, entry); });
}

}  // namespace quenwick
