#include "quenwick/deeplink/LinkOperations.h"

#include "quenwick/platform/FatalError.h"
#include "quenwick/platform/RegularExpression.h"
#include "quenwick/platform/StandardStreams.h"
#include "quenwick/platform/URLComponents.h"

namespace quenwick {

platform::URL ensureHTTPS(const platform::URL& url) {
  platform::URLComponents components(url);
  components.scheme = "https";
  auto secure = components.url();
  if (!secure) platform::fatalError("A link cannot be given the scheme https");
  return *std::move(secure);
}

bool shouldHaltRedirects(const platform::URL& url) {
  auto item = platform::URLComponents::queryItem(url, "qw_hr");
  return item && item->value == "1";
}

std::optional<std::string> qwuValue(const platform::URL& url) {
  auto item = platform::URLComponents::queryItem(url, "qw_u");
  return item ? item->value : std::nullopt;
}

std::vector<std::string> matches(std::string_view text, std::string_view regex) {
  try {
    return platform::RegularExpression::compile(regex).rangesOfMatches(text);
  } catch (const platform::PlatformError& error) {
    platform::printLine("invalid regex: " + error.localizedDescription());
    return {};
  }
}

std::optional<std::string> findRPKey(std::string_view path) {
  for (auto pattern : {R"(rpm?\/([a-f0-9]+)\/url)", R"(gom?\/([a-f0-9]+))"}) {
    auto found = matches(path, pattern);
    if (found.size() >= 2) return std::move(found.back());
  }
  return std::nullopt;
}

}  // namespace quenwick
