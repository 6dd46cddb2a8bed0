#include "quenwick/platform/URLComponents.h"

#include <utility>

#include "quenwick/platform/Text.h"

namespace quenwick::platform {
namespace {

std::optional<std::string> owned(std::optional<std::string_view> part) {
  return part ? std::optional<std::string>(*part) : std::nullopt;
}

URLQueryItem queryItemFrom(std::string_view text) {
  auto equals = text.find('=');
  if (equals == text.npos) return {percentDecoded(text), std::nullopt};
  return {percentDecoded(text.substr(0, equals)), percentDecoded(text.substr(equals + 1))};
}

/// Calls `use` with the text of each item until it answers false.
template <class Use>
void forEachItem(std::string_view query, Use use) {
  if (query.empty()) return;
  for (;;) {
    auto mark = query.find('&');
    if (!use(query.substr(0, mark)) || mark == query.npos) return;
    query.remove_prefix(mark + 1);
  }
}

// What may stand in a name or a value: of a query's characters those that no reader of queries
// takes for a mark or, as "+", for a blank.
constexpr std::string_view kAllowedInItem = "!$'()*,:@/?";

}  // namespace

URLComponents::URLComponents(const URL& url)
    : scheme(url.scheme()),
      percentEncodedAuthority(owned(url.authority())),
      percentEncodedPath(url.path()),
      percentEncodedQuery(owned(url.query())),
      percentEncodedFragment(owned(url.fragment())) {}

std::string URLComponents::path() const { return percentDecoded(percentEncodedPath); }

std::vector<URLQueryItem> URLComponents::queryItems() const {
  std::vector<URLQueryItem> items;
  forEachItem(percentEncodedQuery.value_or(""), [&](std::string_view text) {
    items.push_back(queryItemFrom(text));
    return true;
  });
  return items;
}

void URLComponents::appendQueryItems(const std::vector<URLQueryItem>& items) {
  if (items.empty()) return;
  auto query = percentEncodedQuery.value_or("");
  for (const auto& item : items) {
    if (!query.empty()) query += '&';
    query += percentEncoded(item.name, kAllowedInItem);
    if (item.value) query += "=" + percentEncoded(*item.value, kAllowedInItem);
  }
  percentEncodedQuery = std::move(query);
}

std::optional<URLQueryItem> URLComponents::queryItem(const URL& url, std::string_view name) {
  std::optional<URLQueryItem> found;
  forEachItem(url.query().value_or(""), [&](std::string_view text) {
    bool isNamed = text.starts_with(name) || text.find('%') != text.npos;
    if (isNamed) found = queryItemFrom(text);
    if (found && found->name != name) found.reset();
    return !found;
  });
  return found;
}

std::string URLComponents::string() const {
  std::string text;
  if (!scheme.empty()) text = scheme + ":";
  if (percentEncodedAuthority) text += "//" + *percentEncodedAuthority;
  text += percentEncodedPath;
  if (percentEncodedQuery) text += "?" + *percentEncodedQuery;
  if (percentEncodedFragment) text += "#" + *percentEncodedFragment;
  return text;
}

std::optional<URL> URLComponents::url() const { return URL::parse(string()); }

}  // namespace quenwick::platform
