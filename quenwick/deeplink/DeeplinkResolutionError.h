#pragma once

#include <string>
#include <variant>

#include "quenwick/platform/Error.h"
#include "quenwick/platform/Export.h"

namespace quenwick::inline v0 {

/// Why a link did not resolve.
class QUENWICK_EXPORT DeeplinkResolutionError : public platform::Error {
 public:
  struct Failure {
    /// The link that was resolved, with the scheme "https".
    std::string link;
    /// What the server answered, or what went wrong on the way there.
    std::string message;
    friend bool operator==(const Failure&, const Failure&) = default;
  };
  struct Unknown {
    friend bool operator==(const Unknown&, const Unknown&) = default;
  };
  using Case = std::variant<Failure, Unknown>;

  static DeeplinkResolutionError failure(std::string link, std::string message);
  static DeeplinkResolutionError unknown();

  /// Which it is, to be told apart by `std::get_if`.
  const Case& value() const { return case_; }

  /// The error as domain "com.quenwick.error", code -1 or -2, and user info: the reason under
  /// `NSLocalizedFailureReasonErrorKey` and, for a failure, the link under `NSURLErrorKey`.
  platform::PlatformError nsError() const;
  platform::PlatformError platformError() const override { return nsError(); }

 private:
  explicit DeeplinkResolutionError(Case value);

  Case case_;
};

}  // namespace quenwick::inline v0
