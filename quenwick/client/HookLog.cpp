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
  HostCalls::shared().run([&] {
    // Set back whatever the hook throws.
    struct Inside {
      Inside() { isInHook = true; }
      ~Inside() { isInHook = false; }
    } inside;
    hook_(entry.level, entry.message);
  });
}

}  // namespace quenwick
