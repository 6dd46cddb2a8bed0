#pragma once

#include <exception>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "quenwick/platform/Export.h"

namespace quenwick::platform::inline v0 {

class PlatformError;

/// A failure as a value: thrown inside the library, kept and inspected where it is reported.
class QUENWICK_EXPORT Error : public std::exception {
 public:
  /// What a person reads of the failure.
  const std::string& localizedDescription() const { return description_; }

  /// The same, as C text that lives as long as the error.
  const char* what() const noexcept override { return description_.c_str(); }

  /// The failure as domain, code and user info. Errors without a form of their own have the
  /// domain "com.quenwick.sdk" and code 1.
  virtual PlatformError platformError() const;

 protected:
  /// For the kinds of errors: `description` is what a person reads.
  explicit Error(std::string description) : description_(std::move(description)) {}

 private:
  std::string description_;
};

/// An error that is kept, whatever its kind.
using ErrorPointer = std::shared_ptr<const Error>;
/// What is known of an error, as texts by key.
using UserInfo = std::map<std::string, std::string, std::less<>>;

/// An error of the platform: every foreign library's codes are translated into one of these.
class QUENWICK_EXPORT PlatformError : public Error {
 public:
  /// An error of its parts, none of which is checked.
  PlatformError(std::string domain, int code, std::string description, UserInfo userInfo = {});

  /// Which table of codes the code is of, as "NSURLErrorDomain".
  const std::string& domain() const { return domain_; }
  /// The error's number in its domain.
  int code() const { return code_; }
  /// What else is known, by the keys below.
  const UserInfo& userInfo() const { return userInfo_; }

  /// Itself.
  PlatformError platformError() const override;

 private:
  std::string domain_;
  int code_;
  UserInfo userInfo_;
};

/// An error of another library, or of the host, that is known by its text alone.
class QUENWICK_EXPORT OtherError : public Error {
 public:
  /// `description` is what a person reads.
  explicit OtherError(std::string description);
};

/// The exception as an error that can be kept; one that is not an `Error` is kept by its text.
QUENWICK_EXPORT ErrorPointer errorFrom(const std::exception_ptr& exception);

/// Key of the text of the URL whose load failed.
inline constexpr std::string_view NSURLErrorFailingURLStringErrorKey =
    "NSURLErrorFailingURLStringErrorKey";
/// Key of the link that did not resolve.
inline constexpr std::string_view NSURLErrorKey = "NSURLErrorKey";
/// Key of the reason as a person reads it.
inline constexpr std::string_view NSLocalizedFailureReasonErrorKey =
    "NSLocalizedFailureReasonErrorKey";

/// Domain of the URL loading system's errors.
inline constexpr std::string_view kURLErrorDomain = "NSURLErrorDomain";

/// Codes of the URL loading system's errors.
namespace URLErrorCode {
/// None of those below.
inline constexpr int unknown = -1;
/// Its caller has cancelled it.
inline constexpr int cancelled = -999;
/// The request or its URL is malformed.
inline constexpr int badURL = -1000;
/// No answer in time.
inline constexpr int timedOut = -1001;
/// The scheme is neither http nor https.
inline constexpr int unsupportedURL = -1002;
/// The host's name has no address.
inline constexpr int cannotFindHost = -1003;
/// Nobody listens there.
inline constexpr int cannotConnectToHost = -1004;
/// The connection ended in the middle.
inline constexpr int networkConnectionLost = -1005;
/// More redirects than are followed.
inline constexpr int httpTooManyRedirects = -1007;
/// The server's answer made no sense.
inline constexpr int badServerResponse = -1011;
/// The body is not encoded as it says.
inline constexpr int cannotDecodeContentData = -1016;
/// The answer is no HTTP.
inline constexpr int cannotParseResponse = -1017;
/// The body is larger than is taken.
inline constexpr int dataLengthExceedsMaximum = -1103;
/// TLS could not be agreed upon.
inline constexpr int secureConnectionFailed = -1200;
/// The certificate has expired.
inline constexpr int serverCertificateHasBadDate = -1201;
/// The certificate is not the host's, or does not hold.
inline constexpr int serverCertificateUntrusted = -1202;
/// Nobody who is trusted has issued the certificate.
inline constexpr int serverCertificateHasUnknownRoot = -1203;
/// The certificate holds only later.
inline constexpr int serverCertificateNotYetValid = -1204;
}  // namespace URLErrorCode

/// Domain of the operating system's errors; a code is what `errno` says.
inline constexpr std::string_view kPOSIXErrorDomain = "NSPOSIXErrorDomain";

}  // namespace quenwick::platform::inline v0
