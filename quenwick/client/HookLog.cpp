#include "quenwick/client/HookLog.h"

#include "quenwick/client/HostCalls.h"

namespace quenwick {
namespace {

thread_local bool isInHook = false;

}  // namespace

void HookLog::write(const platform::LogEntry& entry) {
  if (isInHook) {
    if (standardError_.isEnabled(entry.level)) standardError_.write(entry);
    return;
  }
  // Set back only after the call has ended: the line about what the hook throws must not reach it.
  struct Inside {
    Inside() { isInHook = true; }
    ~Inside() { isInHook = false; }
  } inside;
  HostCalls::shared().run([&] { hook_(entry.level, entry.message); });
}

}  // namespace quenwick
