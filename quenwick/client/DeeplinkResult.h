#pragma once

#include <functional>
#include <optional>
#include <string>
#include <variant>

#include "quenwick/deeplink/DeeplinkResolutionError.h"
#include "quenwick/platform/Error.h"

namespace quenwick::inline v0 {

/// Where a link leads, as text, or why it did not resolve:
///
///     if (auto link = std::get_if<std::string>(&result)) openPage(*link);
using DeeplinkResult = std::variant<std::string, DeeplinkResolutionError>;

/// Takes the outcome of a link.
using DeeplinkHandler = std::function<void(const DeeplinkResult& result)>;

/// The same for callers that cannot take a variant: a link, or an error of the domain
/// "com.quenwick.error"; exactly one of the two is there.
using DeeplinkCompatibilityHandler = std::function<void(
    const std::optional<std::string>& link, const std::optional<platform::PlatformError>& error)>;

}  // namespace quenwick::inline v0
