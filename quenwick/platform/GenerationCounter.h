#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>

namespace quenwick::platform {

/// A counter in a small file that all processes using a store share: each raises it after a write,
/// and sees by it whether another one has. (The file is read, not mapped: a mapped file that
/// somebody cuts short would raise a signal in the host.)
class GenerationCounter {
 public:
  /// Without the file (a full disk, a read-only folder) the counter is this process's alone.
  explicit GenerationCounter(const std::filesystem::path& file);
  ~GenerationCounter();
  GenerationCounter(const GenerationCounter&) = delete;
  GenerationCounter& operator=(const GenerationCounter&) = delete;

  std::uint64_t value() const;

  /// Held while a write is committed and the counter raised, by one process at a time. Throws
  /// `SQLiteError` where another one does not let go of it for seconds.
  class Raise {
   public:
    explicit Raise(GenerationCounter& counter);
    ~Raise();
    Raise(const Raise&) = delete;
    Raise& operator=(const Raise&) = delete;

    /// Raises the counter by one and returns what it was before.
    std::uint64_t commit();

   private:
    GenerationCounter& counter_;
  };

 private:
  const int descriptor_;
  std::atomic<std::uint64_t> own_ = 0;
};

}  // namespace quenwick::platform
