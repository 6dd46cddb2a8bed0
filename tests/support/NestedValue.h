#pragma once

#include <utility>

#include "quenwick/platform/Value.h"

namespace quenwick::tests {

/// Lists and dictionaries within each other, so many levels deep, around that value.
inline platform::Value nested(int levels, platform::Value value = {}) {
  for (int i = 0; i < levels; ++i) {
    if (i % 2 == 0) {
      platform::List list;
      list.push_back(std::move(value));
      value = std::move(list);
    } else {
      platform::Dictionary dictionary;
      dictionary.set("in", std::move(value));
      value = std::move(dictionary);
    }
  }
  return value;
}

}  // namespace quenwick::tests
