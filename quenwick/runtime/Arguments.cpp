#include <algorithm>

#include "quenwick/runtime/Operation.h"

namespace quenwick::runtime {

void Arguments::check(const std::vector<Parameter>& parameters) const {
  auto callback = std::ranges::find(parameters, true, &Parameter::isCallback);
  bool takesCallback = callback != parameters.end();
  auto count = parameters.size() - (takesCallback ? 1 : 0);
  if (values_.size() != count) {
    throw ArgumentError("takes " + std::to_string(count) +
                        (count == 1 ? " argument" : " arguments") +
                        (takesCallback ? " beside its callback" : "") + " and was given " +
                        std::to_string(values_.size()));
  }
  if (callback_ && !takesCallback) throw ArgumentError("takes no callback");
  if (!callback_ && takesCallback && callback->isRequired) {
    throw ArgumentError("needs a callback (" + callback->name + ")");
  }
}

}  // namespace quenwick::runtime
