#pragma once

#include <string>

namespace quenwick::sandbox {

/// Why a request is not what the service asks for. Thrown by what judges.
struct Refusal {
  int status = 422;
  /// The dotted name of a field or header, or "method", "path", "query", "body".
  std::string field;
  std::string reason;
};

}  // namespace quenwick::sandbox
