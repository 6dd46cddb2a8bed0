#pragma once

#include <string>
#include <utility>

#include "quenwick/platform/Error.h"

namespace quenwick {

/// A JSON value that is not of the shape that the type decoded from it asks for.
class DecodingError : public platform::Error {
 public:
  explicit DecodingError(std::string description) : Error(std::move(description)) {}
};

}  // namespace quenwick
