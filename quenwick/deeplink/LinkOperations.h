#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quenwick/platform/URL.h"

namespace quenwick {

/// The same URL with the scheme "https", whatever scheme it had, or had not. Every parsed URL has
/// such a form; one that had none would stop the process.
platform::URL ensureHTTPS(const platform::URL& url);

/// Whether the URL asks for the redirects to end before it: its first query item "qw_hr" is "1".
bool shouldHaltRedirects(const platform::URL& url);

/// The value of the first query item "qw_u"; empty where nothing follows its equals sign.
std::optional<std::string> qwuValue(const platform::URL& url);

/// The whole match and then its groups, for every match of the pattern in the text. A pattern that
/// does not compile matches nothing, and one line about it goes to standard output.
std::vector<std::string> matches(std::string_view text, std::string_view regex);

/// The rules key that a path carries: the lower-case hexadecimal segment between rp/ or rpm/ and
/// /url, else that after go/ or gom/; of several the last.
std::optional<std::string> findRPKey(std::string_view path);

}  // namespace quenwick
