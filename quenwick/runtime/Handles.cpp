#include "quenwick/runtime/Handles.h"

#include <utility>

#include "quenwick/runtime/ArgumentError.h"

namespace quenwick::runtime {

// Entries are destroyed without the lock: what they hold may be the host's.

Handles& Handles::shared() {
  static auto& instance = *new Handles;
  return instance;
}

std::int64_t Handles::add(std::function<void()> end, std::function<bool()> isOver) {
  std::map<std::int64_t, Entry> over;
  std::lock_guard lock(mutex_);
  for (auto each = entries_.begin(); each != entries_.end();) {
    auto next = std::next(each);
    if (each->second.isOver()) over.insert(entries_.extract(each));
    each = next;
  }
  entries_.emplace(++last_, Entry{std::move(end), std::move(isOver)});
  return last_;
}

bool Handles::cancel(std::int64_t number) {
  Entry entry;
  {
    std::lock_guard lock(mutex_);
    if (number < 1 || number > last_) {
      throw ArgumentError("nothing has the number " + std::to_string(number));
    }
    auto found = entries_.extract(number);
    if (!found) return false;
    entry = std::move(found.mapped());
  }
  if (entry.isOver()) return false;
  entry.end();
  return true;
}

void Handles::cancelAll() {
  std::map<std::int64_t, Entry> entries;
  {
    std::lock_guard lock(mutex_);
    entries.swap(entries_);
  }
  for (const auto& [number, entry] : entries) entry.end();
}

}  // namespace quenwick::runtime
