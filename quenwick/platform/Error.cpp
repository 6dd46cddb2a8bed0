#include "quenwick/platform/Error.h"

#include <utility>

namespace quenwick::platform {

PlatformError Error::platformError() const {
  return PlatformError("com.quenwick.sdk", 1, localizedDescription());
}

PlatformError::PlatformError(std::string domain, int code, std::string description,
                             UserInfo userInfo)
    : Error(std::move(description)),
      domain_(std::move(domain)),
      code_(code),
      userInfo_(std::move(userInfo)) {}

namespace {

/// An `Error` of any type, kept alive by the exception it was thrown as.
ErrorPointer keep(const std::exception_ptr& exception, const Error& error) {
  auto owner = std::make_shared<std::exception_ptr>(exception);
  return ErrorPointer(std::move(owner), &error);
}

}  // namespace

ErrorPointer v0::errorFrom(const std::exception_ptr& exception) {
  try {
    std::rethrow_exception(exception);
  } catch (const Error& error) {
    return keep(exception, error);
  } catch (const std::exception& error) {
    return std::make_shared<OtherError>(error.what());
  } catch (...) {
    return std::make_shared<OtherError>("an exception of an unknown type");
  }
}

}  // namespace quenwick::platform
