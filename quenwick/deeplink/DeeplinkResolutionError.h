#pragma once

#include <string>
#include <variant>

#include "quenwick/platform/Error.h"
#include "quenwick/platform/Export.h"

namespace quenwick::inline v0 {

/// Why a link did not resolve.
class QUENWICK_EXPORT DeeplinkResolutionError : public platform::Error {
 public:
  /// It failed, for a reason that is known.
  struct Failure {
    /// The link that was resolved, with the scheme "https". A text that is no URL is cut and
    /// escaped.
    std::string link;
    /// What the server answered, or what went wrong on the way there.
    std::string message;
    friend bool operator==(const Failure&, const Failure&) = default;
  };
  /// It failed for no reason that is known.
  struct Unknown {
    friend bool operator==(const Unknown&, const Unknown&) = default;
  };
  /// What kinds of it there are.
  using Case = std::variant<Failure, Unknown>;

  /// A failure of the link; `message` is what a person reads of it.
  static DeeplinkResolutionError failure(std::string link, std::string message);
  /// A failure without a reason.
  static DeeplinkResolutionError unknown();

  /// Which it is, to be told apart by `std::get_if`.
  const Case& value() const { return case_; }

  /// The error as domain "com.quenwick.error", code -1 or -2, and user info: the reason under
  /// `NSLocalizedFailureReasonErrorKey` and, for a failure, the link under `NSURLErrorKey`.
  platform::PlatformError nsError() const;
  /// The same, for errors of every kind.
  platform::PlatformError platformError() const override;

 private:
  explicit DeeplinkResolutionError(Case value);

  Case case_;
};

}  // namespace quenwick::inline v0
