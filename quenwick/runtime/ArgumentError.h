#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "quenwick/platform/Error.h"
#include "quenwick/platform/Text.h"
#include "quenwick/platform/Value.h"

namespace quenwick::runtime {

/// What is wrong with what a host gave, and where: the places from the outermost one inwards.
class ArgumentError : public platform::Error {
 public:
  explicit ArgumentError(std::string fault) : ArgumentError({}, std::move(fault)) {}

  /// What was asked for, and what came.
  static ArgumentError mismatch(std::string_view kind, const platform::Value& value);

  /// The same fault, at a place within another.
  ArgumentError within(const std::string& place) const;

 private:
  ArgumentError(std::string places, std::string fault);

  std::string places_;
  std::string fault_;
};

/// What `work` yields; a fault in it lies at that place. `place` makes the text of it.
template <class Place, class Work>
auto at(const Place& place, const Work& work) {
  try {
    return work();
  } catch (const ArgumentError& error) {
    throw error.within(place());
  }
}

/// The place of a key in a dictionary.
inline std::string keyed(std::string_view key) { return "key \"" + platform::shown(key) + "\""; }

}  // namespace quenwick::runtime
