#pragma once

#include <exception>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "quenwick/platform/Export.h"

namespace quenwick::platform::inline v0 {

class PlatformError;

/// A failure as a value: thrown inside the library, kept and inspected where it is reported.
class QUENWICK_EXPORT Error : public std::exception {
 public:
  /// What a person reads of the failure.
  const std::string& localizedDescription() const { return description_; }

  const char* what() const noexcept override { return description_.c_str(); }

  /// The failure as domain, code and user info. Errors without a form of their own have the
  /// domain "com.quenwick.sdk" and code 1.
  virtual PlatformError platformError() const;

 protected:
  explicit Error(std::string description) : description_(std::move(description)) {}

 private:
  std::string description_;
};

using ErrorPointer = std::shared_ptr<const Error>;
using UserInfo = std::map<std::string, std::string, std::less<>>;

/// An error of the platform: every foreign library's codes are translated into one of these.
class QUENWICK_EXPORT PlatformError : public Error {
 public:
  PlatformError(std::string domain, int code, std::string description, UserInfo userInfo = {});

  const std::string& domain() const { return domain_; }
  int code() const { return code_; }
  const UserInfo& userInfo() const { return userInfo_; }

  PlatformError platformError() const override { return *this; }

 private:
  std::string domain_;
  int code_;
  UserInfo userInfo_;
};

/// An error of another library, or of the host, that is known by its text alone.
class QUENWICK_EXPORT OtherError : public Error {
 public:
  explicit OtherError(std::string description) : Error(std::move(description)) {}
};

/// The exception as an error that can be kept; one that is not an `Error` is kept by its text.
QUENWICK_EXPORT ErrorPointer errorFrom(const std::exception_ptr& exception);

/// Keys of a platform error's user info.
inline constexpr std::string_view NSURLErrorFailingURLStringErrorKey =
    "NSURLErrorFailingURLStringErrorKey";
inline constexpr std::string_view NSURLErrorKey = "NSURLErrorKey";
inline constexpr std::string_view NSLocalizedFailureReasonErrorKey =
    "NSLocalizedFailureReasonErrorKey";

/// Domain of the URL loading system's errors, and its codes.
inline constexpr std::string_view kURLErrorDomain = "NSURLErrorDomain";

namespace URLErrorCode {
inline constexpr int unknown = -1;
inline constexpr int cancelled = -999;
inline constexpr int badURL = -1000;
inline constexpr int timedOut = -1001;
inline constexpr int unsupportedURL = -1002;
inline constexpr int cannotFindHost = -1003;
inline constexpr int cannotConnectToHost = -1004;
inline constexpr int networkConnectionLost = -1005;
inline constexpr int httpTooManyRedirects = -1007;
inline constexpr int badServerResponse = -1011;
inline constexpr int cannotDecodeContentData = -1016;
inline constexpr int cannotParseResponse = -1017;
inline constexpr int dataLengthExceedsMaximum = -1103;
inline constexpr int secureConnectionFailed = -1200;
inline constexpr int serverCertificateHasBadDate = -1201;
inline constexpr int serverCertificateUntrusted = -1202;
inline constexpr int serverCertificateHasUnknownRoot = -1203;
inline constexpr int serverCertificateNotYetValid = -1204;
}  // namespace URLErrorCode

/// Domain of the operating system's errors; a code is what `errno` says.
inline constexpr std::string_view kPOSIXErrorDomain = "NSPOSIXErrorDomain";

}  // namespace quenwick::platform::inline v0
