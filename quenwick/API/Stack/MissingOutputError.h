#pragma once

#include "quenwick/platform/Error.h"

namespace quenwick {

/// A stream that was waited for ended without a value.
class MissingOutputError : public platform::Error {
 public:
  MissingOutputError() : Error("The request ended without an answer") {}
};

}  // namespace quenwick
