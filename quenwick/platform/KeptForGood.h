#pragma once

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace quenwick::platform {

/// The object, which is never destroyed: work that a thread still has may be about it.
template <class Kind>
Kind& keptForGood(std::unique_ptr<Kind> made) {
  struct All {
    std::mutex mutex;
    std::vector<std::unique_ptr<Kind>> objects;
  };
  static auto& all = *new All;
  std::lock_guard lock(all.mutex);
  return *all.objects.emplace_back(std::move(made));
}

}  // namespace quenwick::platform
