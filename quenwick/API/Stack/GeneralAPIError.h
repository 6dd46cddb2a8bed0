#pragma once

#include <string>

#include "quenwick/platform/Error.h"
#include "quenwick/platform/Value.h"

namespace quenwick {

/// The error body of the service.
class GeneralAPIError : public platform::Error {
 public:
  explicit GeneralAPIError(const std::string& text) : Error(text), error(text) {}

  /// Reads "error", else "message", of an object; "Unknown error occurred" where neither stands
  /// there or both are null. Throws `DecodingError` for anything but an object, and where either
  /// key holds something other than a text.
  static GeneralAPIError decode(const platform::Value& body);

  /// What the service says, which is also the description of this error.
  std::string error;
};

}  // namespace quenwick
