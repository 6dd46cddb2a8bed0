#pragma once

#include <deque>
#include <memory>
#include <mutex>

namespace quenwick::sandbox {

/// Keeps the last entries: at most 100,000, and less if they are large.
template <typename Entry>
class BoundedLog {
 public:
  using Entries = std::deque<std::shared_ptr<const Entry>>;

  /// `bytes` is what the entry occupies.
  void add(std::shared_ptr<const Entry> entry, std::size_t bytes) {
    std::shared_ptr<const Entry> dropped;
    const std::lock_guard lock(mutex_);
    entries_.push_back(std::move(entry));
    sizes_.push_back(bytes);
    bytes_ += bytes;
    while (entries_.size() > kMostEntries || (bytes_ > kMostBytes && entries_.size() > 1)) {
      dropped = std::move(entries_.front());
      bytes_ -= sizes_.front();
      entries_.pop_front();
      sizes_.pop_front();
    }
  }

  void forget() {
    Entries dropped;
    const std::lock_guard lock(mutex_);
    dropped.swap(entries_);
    sizes_.clear();
    bytes_ = 0;
  }

  /// In the order added.
  Entries entries() const {
    const std::lock_guard lock(mutex_);
    return entries_;
  }

 private:
  static constexpr std::size_t kMostEntries = 100'000;
  static constexpr std::size_t kMostBytes = 256U << 20U;

  mutable std::mutex mutex_;
  Entries entries_;
  std::deque<std::size_t> sizes_;
  std::size_t bytes_ = 0;
};

}  // namespace quenwick::sandbox
