#include <unistd.h>

#include "quenwick/platform/FileLock.h"
#include "quenwick/platform/GenerationCounter.h"
#include "quenwick/platform/PrivateFile.h"
#include "quenwick/platform/SQLiteDatabase.h"

namespace quenwick::platform {

GenerationCounter::GenerationCounter(const std::filesystem::path& file)
    : descriptor_(openPrivateFile(file)) {}

GenerationCounter::~GenerationCounter() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

std::uint64_t GenerationCounter::value() const {
  std::uint64_t value = 0;
  bool isRead = descriptor_ >= 0 && ::pread(descriptor_, &value, sizeof value, 0) == sizeof value;
  return isRead ? value : own_.load();
}

GenerationCounter::Raise::Raise(GenerationCounter& counter) : counter_(counter) {
  if (!lockFile(counter_.descriptor_)) throw SQLiteError::busy("another process holds the file");
}

GenerationCounter::Raise::~Raise() { unlockFile(counter_.descriptor_); }

std::uint64_t GenerationCounter::Raise::commit() {
  auto before = counter_.value();
  counter_.own_ = before + 1;
  auto after = before + 1;
  // A counter that cannot be written is this process's alone, like one that has no file.
  [[maybe_unused]] auto written =
      counter_.descriptor_ < 0 ? 0 : ::pwrite(counter_.descriptor_, &after, sizeof after, 0);
  return before;
}

}  // namespace quenwick::platform
