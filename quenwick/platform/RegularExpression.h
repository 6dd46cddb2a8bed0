#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "quenwick/platform/Error.h"

namespace quenwick::platform {

/// A compiled pattern. Values are cheap to copy, may be used from several threads at once, and
/// are kept by pattern text, so that each pattern is compiled once in a process.
class RegularExpression {
 public:
  /// Throws `PlatformError` where the pattern does not compile.
  static RegularExpression compile(std::string_view pattern);

  /// Whether the pattern is found anywhere in the text. A search that exceeds its bound of work
  /// (a text made to defeat backtracking) finds nothing.
  bool isFound(std::string_view text) const;

  /// For every match, in order: the whole match and then each capture group. A group that took no
  /// part is skipped.
  std::vector<std::string> rangesOfMatches(std::string_view text) const;

 private:
  struct Compiled;
  explicit RegularExpression(std::shared_ptr<const Compiled> compiled)
      : compiled_(std::move(compiled)) {}

  std::shared_ptr<const Compiled> compiled_;
};

}  // namespace quenwick::platform
