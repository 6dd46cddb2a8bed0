#pragma once

#include <curl/curl.h>

#include <memory>
#include <string>

#include "quenwick/platform/Error.h"

namespace quenwick::platform {

/// The loading system's code for curl's; `verification` is OpenSSL's verdict on the certificate.
int urlErrorCode(CURLcode code, long verification);

/// The error of that code, with the failing URL's text in its user info unless that is empty.
std::shared_ptr<const PlatformError> urlError(int code, const std::string& failingURL);

}  // namespace quenwick::platform
