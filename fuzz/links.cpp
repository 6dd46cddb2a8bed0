// A link, a path, and a pattern, a line each.

#include <algorithm>

#include "fuzz/Target.h"
#include "quenwick/client/HandleableLinks.h"
#include "quenwick/deeplink/DeeplinkPath.h"
#include "quenwick/deeplink/LinkOperations.h"
#include "quenwick/platform/Error.h"
#include "quenwick/platform/RegularExpression.h"
#include "quenwick/platform/URLComponents.h"
#include "tests/support/SilentLog.h"

namespace quenwick::fuzz {
namespace {

using Key = std::optional<std::string>;

/// Where the text goes on behind the stem, with or without an "m", and the mark; npos where another
/// text stands at that place.
std::size_t behind(std::string_view text, std::size_t at, std::string_view stem) {
  if (text.substr(at, stem.size()) != stem) return text.npos;
  at += stem.size();
  if (text.substr(at, 1) == "m") ++at;
  return text.substr(at, 1) == "/" ? at + 1 : text.npos;
}

/// Whether the stem is found, and behind it, a character at least further on, the end.
bool hasShape(std::string_view text, std::string_view stem, std::string_view end) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    auto next = behind(text, at, stem);
    if (next != text.npos && (end.empty() || text.find(end, next + 1) != text.npos)) return true;
  }
  return false;
}

std::optional<DeeplinkPath> shapeOf(std::string_view text) {
  auto isWritten = [text](DeeplinkPath shape) { return text.find(shape.rawValue()) != text.npos; };
  if (isWritten(DeeplinkPath::rpLink) || hasShape(text, "/p/rp", "/url")) {
    return DeeplinkPath::rpLink;
  }
  if (isWritten(DeeplinkPath::cpLink) || hasShape(text, "/p/cp", "/c")) {
    return DeeplinkPath::cpLink;
  }
  bool isGo = isWritten(DeeplinkPath::goLinks) || hasShape(text, "/p/go", "");
  return isGo ? std::optional(DeeplinkPath(DeeplinkPath::goLinks)) : std::nullopt;
}

/// The last hexadecimal segment behind the stem that `end` follows.
Key lastKey(std::string_view path, std::string_view stem, std::string_view end) {
  Key key;
  for (std::size_t at = 0; at < path.size(); ++at) {
    auto begin = behind(path, at, stem);
    if (begin == path.npos) continue;
    auto digits = path.substr(begin);
    digits = digits.substr(0, digits.find_first_not_of("0123456789abcdef"));
    auto stop = begin + digits.size();
    if (digits.empty() || path.substr(stop, end.size()) != end) continue;
    key = digits;
    at = stop + end.size() - 1;
  }
  return key;
}

/// The same host with another case, or one more label, is another host.
void checkDomains(const platform::URL& url, bool isTracked) {
  auto host = std::string(url.host().value_or(""));
  HandleableLinks links;
  links.insertDomains({"a." + host, host + ".", ""});
  holds(!links.contains(url), "a link of no registered domain is not handled", host);
  links.insertDomains({host});
  holds(links.contains(url) == (isTracked && !host.empty()),
        "a link of a registered domain is handled where it has a shape", host);
  links.addPaths({{host, {"", "("}}});
  holds(links.contains(url) == !host.empty(), "and where a pattern of its host is found", host);
}

/// The value of the first of the URL's items with that name.
Key firstValue(const platform::URL& url, std::string_view name) {
  const auto items = platform::URLComponents(url).queryItems();
  auto first = std::ranges::find(items, name, &platform::URLQueryItem::name);
  return first == items.end() ? std::nullopt : first->value;
}

void checkItems(const platform::URL& url) {
  holds(qwuValue(url) == firstValue(url, "qw_u"), "the link user is in the first item of its name",
        url.absoluteString());
  holds(shouldHaltRedirects(url) == (firstValue(url, "qw_hr") == "1"),
        "redirects end where the first item of its name is \"1\"", url.absoluteString());
}

void checkPattern(std::string_view text, std::string_view pattern) {
  try {
    auto expression = platform::RegularExpression::compile(pattern);
    auto ranges = expression.rangesOfMatches(text);
    holds(expression.isFound(text) == !ranges.empty(), "what is found is listed", pattern);
    for (const auto& range : ranges) {
      holds(text.find(range) != text.npos, "what matches is part of the text", range);
    }
  } catch (const platform::PlatformError& error) {
    holds(!error.localizedDescription().empty(), "a pattern that does not compile says why");
  }
}

}  // namespace
}  // namespace quenwick::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quenwick;
  [[maybe_unused]] static const bool isSilent = tests::SilentLog::install();
  fuzz::Input input(data, size);
  const auto link = input.line();
  if (auto url = platform::URL::parse(std::string(link))) {
    auto shape = DeeplinkPath::path(*url);
    fuzz::holds(shape == fuzz::shapeOf(link), "a link has the first shape that it holds", link);
    fuzz::checkDomains(*url, shape.has_value());
    fuzz::checkItems(*url);
  }
  const auto path = input.line();
  auto key = fuzz::lastKey(path, "rp", "/url");
  if (!key) key = fuzz::lastKey(path, "go", "");
  fuzz::holds(findRPKey(path) == key, "the rules key is the last hexadecimal segment", path);
  fuzz::checkPattern(path, input.line());
  return 0;
}
