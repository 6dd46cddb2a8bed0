#include "quenwick/platform/FileLock.h"

#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <thread>

namespace quenwick::platform {

bool lockFile(int descriptor, FileLockKind kind) {
  constexpr std::chrono::seconds kPatience(5);
  constexpr std::chrono::milliseconds kPause(1);
  if (descriptor < 0) return true;
  const int operation = (kind == FileLockKind::alone ? LOCK_EX : LOCK_SH) | LOCK_NB;
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (::flock(descriptor, operation) != 0) {
    bool isHeld = errno == EWOULDBLOCK;
    if (!isHeld && errno != EINTR) return true;  // this file system has no locks
    if (std::chrono::steady_clock::now() >= end) return false;
    if (isHeld) std::this_thread::sleep_for(kPause);
  }
  return true;
}

void unlockFile(int descriptor) {
  if (descriptor >= 0) ::flock(descriptor, LOCK_UN);
}

}  // namespace quenwick::platform
