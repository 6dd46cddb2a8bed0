#pragma once

#include <optional>

#include "quenwick/API/Stack/HTTPHeaders.h"
#include "quenwick/API/Stack/HTTPMethod.h"
#include "quenwick/platform/URLRequest.h"

namespace quenwick {

namespace platform {
struct URLSessionConfiguration;
}

/// The request's method; none where it has none.
std::optional<HTTPMethod> method(const platform::URLRequest& request);
void setMethod(platform::URLRequest& request, std::optional<HTTPMethod> method);

/// The header fields, in their order. Several of one name are one header, its values joined with
/// ", " in the place of the first.
HTTPHeaders headers(const platform::URLRequest& request);
HTTPHeaders headers(const platform::HTTPURLResponse& response);
HTTPHeaders headers(const platform::URLSessionConfiguration& configuration);

/// Replaces all header fields. A header that would not stay one field on the wire is left out,
/// with an error line that names it: its name is no token of HTTP, or its value holds a line
/// break or a zero byte. Nothing that came from outside can add a field of its own this way.
void setHeaders(platform::URLRequest& request, const HTTPHeaders& headers);
void setHeaders(platform::URLSessionConfiguration& configuration, const HTTPHeaders& headers);

/// Throws `APIError` (`BodyDataInGETRequest`) where a GET request has a body, even an empty one.
void validate(const platform::URLRequest& request);

}  // namespace quenwick
