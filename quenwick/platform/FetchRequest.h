#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "quenwick/platform/Predicate.h"

namespace quenwick::platform {

/// An order of objects by one attribute. Texts order by their bytes, unset values as smallest.
struct SortDescriptor {
  std::string key;
  bool ascending = true;

  friend bool operator==(const SortDescriptor&, const SortDescriptor&) = default;
};

/// Which objects of an entity are asked for, and in which order.
struct FetchRequest {
  std::string entityName;
  std::optional<Predicate> predicate = std::nullopt;
  /// The first decides, then the second and so on. Objects equal under all of them come as they
  /// were first saved: the latest first where the last descriptor descends.
  std::vector<SortDescriptor> sortDescriptors = {};
  /// At most so many; zero for all.
  std::size_t fetchLimit = 0;
};

}  // namespace quenwick::platform
