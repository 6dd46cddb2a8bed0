#include "quenwick/runtime/Arguments.h"

#include <algorithm>

namespace quenwick::runtime {

void Arguments::check(std::span<const std::string_view> names,
                      std::span<const ParameterKind> kinds) {
  names_ = names;
  auto callback = std::ranges::find(kinds, true, &ParameterKind::isCallback);
  bool takesCallback = callback != kinds.end();
  auto count = kinds.size() - (takesCallback ? 1 : 0);
  if (values_.size() != count) {
    throw ArgumentError("takes " + std::to_string(count) +
                        (count == 1 ? " argument" : " arguments") +
                        (takesCallback ? " beside its callback" : "") + " and was given " +
                        std::to_string(values_.size()));
  }
  if (callback_ && !takesCallback) throw ArgumentError("takes no callback");
  if (!callback_ && takesCallback && callback->isRequired) {
    auto name = names[static_cast<std::size_t>(callback - kinds.begin())];
    throw ArgumentError("needs a callback (" + std::string(name) + ")");
  }
}

platform::Value&& Arguments::next() { return std::move(values_[taken_++]); }

void Arguments::rethrow(const ArgumentError& error, std::string_view operation) const {
  if (taken_ == 0) throw error.within(std::string(operation));
  auto argument =
      "argument " + std::to_string(taken_) + " (" + std::string(names_[taken_ - 1]) + ")";
  throw error.within(argument).within(std::string(operation));
}

}  // namespace quenwick::runtime
