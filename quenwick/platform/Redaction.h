#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quenwick::platform {

/// How much of what a service answered a line of the log shows.
inline constexpr std::size_t kLongestReason = 4000;

/// The text with every secret in it as "…", whether the secret stands there as it is or in any
/// spelling of JSON, cut to `atMost` bytes. An empty secret hides nothing. The time it takes grows
/// with what it returns, and not with a longer text.
std::string redacted(std::string_view text, const std::vector<std::string>& secrets,
                     std::size_t atMost);

}  // namespace quenwick::platform
