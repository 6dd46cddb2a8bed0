// A URL and a reference, a line each.

#include <algorithm>
#include <vector>

#include "fuzz/Target.h"
#include "quenwick/deeplink/LinkOperations.h"
#include "quenwick/platform/Text.h"
#include "quenwick/platform/URLComponents.h"

namespace quenwick::fuzz {
namespace {

using platform::URL;
using platform::URLComponents;
using namespace std::string_view_literals;
using Part = std::optional<std::string_view>;

/// A URL's parts as the expression of RFC 3986, appendix B, finds them.
struct Parts {
  Part scheme, authority, query, fragment;
  std::string_view path;
};

Part cutBehind(std::string_view& text, char mark) {
  auto at = text.find(mark);
  if (at == text.npos) return std::nullopt;
  auto behind = text.substr(at + 1);
  text = text.substr(0, at);
  return behind;
}

bool isIn(std::string_view set, char c) { return set.find(c) != set.npos; }

bool isScheme(std::string_view text) {
  constexpr std::string_view kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
  constexpr std::string_view kOthers = "0123456789+-.";
  return !text.empty() && isIn(kLetters, text.front()) &&
         std::ranges::all_of(text, [&](char c) { return isIn(kLetters, c) || isIn(kOthers, c); });
}

Parts partsOf(std::string_view text) {
  Parts parts;
  parts.fragment = cutBehind(text, '#');
  parts.query = cutBehind(text, '?');
  auto scheme = text.substr(0, text.find(':'));
  if (scheme.size() < text.size() && isScheme(scheme)) {
    parts.scheme = scheme;
    text.remove_prefix(scheme.size() + 1);
  }
  if (text.starts_with("//")) {
    text.remove_prefix(2);
    parts.authority = text.substr(0, text.find('/'));
    text.remove_prefix(parts.authority->size());
  }
  parts.path = text;
  return parts;
}

std::string textOf(const Parts& parts) {
  std::string text;
  if (parts.scheme) text.append(*parts.scheme).append(":");
  if (parts.authority) text.append("//").append(*parts.authority);
  text += parts.path;
  if (parts.query) text.append("?").append(*parts.query);
  if (parts.fragment) text.append("#").append(*parts.fragment);
  return text;
}

/// RFC 3986, 5.2.4.
std::string withoutDotSegments(std::string_view in) {
  std::string out;
  while (!in.empty()) {
    if (in.starts_with("../")) {
      in.remove_prefix(3);
    } else if (in.starts_with("./") || in.starts_with("/./")) {
      in.remove_prefix(2);
    } else if (in == "/.") {
      in = "/";
    } else if (in.starts_with("/../") || in == "/..") {
      in = in.size() == 3 ? "/" : in.substr(3);
      out.resize(out.empty() ? 0 : out.rfind('/') == out.npos ? 0 : out.rfind('/'));
    } else if (in == "." || in == "..") {
      in = {};
    } else {
      auto segment = in.substr(0, in.find('/', 1));
      out += segment;
      in.remove_prefix(segment.size());
    }
  }
  return out;
}

/// RFC 3986, 5.2.2, for a reference without a scheme.
std::string resolved(const Parts& base, const Parts& reference) {
  // A base is without dot segments, which the standard leaves to whoever parsed it.
  const auto basePath = withoutDotSegments(base.path);
  auto authority = reference.authority ? reference.authority : base.authority;
  auto query = reference.query;
  std::string path;
  if (reference.authority || reference.path.starts_with('/')) {
    path = withoutDotSegments(reference.path);
  } else if (reference.path.empty()) {
    path = basePath;
    if (!query) query = base.query;
  } else {
    auto folder = basePath.substr(0, basePath.rfind('/') + 1);
    if (base.authority && folder.empty()) folder = "/";
    path = withoutDotSegments(folder.append(reference.path));
  }
  return textOf({base.scheme, authority, query, reference.fragment, path});
}

void checkParts(const URL& url) {
  const std::string_view text = url.absoluteString();
  auto parts = partsOf(text);
  holds(url.scheme() == parts.scheme.value_or(""), "the scheme is where the standard says", text);
  holds(url.authority() == parts.authority, "the authority is where the standard says", text);
  holds(url.path() == parts.path, "the path is where the standard says", text);
  holds(url.query() == parts.query, "the query is where the standard says", text);
  holds(url.fragment() == parts.fragment, "the fragment is where the standard says", text);
  if (url.host()) {
    holds(url.host()->data() >= url.authority()->data() &&
              url.host()->data() + url.host()->size() <=
                  url.authority()->data() + url.authority()->size(),
          "the host lies in the authority", text);
  }
  holds(platform::isUTF8(text) && text.find_first_of("\0 \r\n\t\x7f"sv) == text.npos,
        "a URL holds neither blanks nor controls nor broken text", text);
}

void checkComponents(const URL& url) {
  URLComponents components(url);
  holds(components.string() == url.absoluteString(), "the parts give the text again",
        url.absoluteString());
  holds(components.url() == url, "the parts give the URL again", url.absoluteString());
  const auto items = components.queryItems();
  for (const auto& item : items) {
    auto first = std::ranges::find(items, item.name, &platform::URLQueryItem::name);
    holds(URLComponents::queryItem(url, item.name) == *first,
          "the first item of a name is the one that is found", item.name);
  }
  auto longer = items;
  longer.insert(longer.end(), items.begin(), items.end());
  longer.push_back({"a b&=+%#\xc3\xa4", "c;d&=+%/?:@"});
  components.appendQueryItems(std::vector(longer.begin() + std::ssize(items), longer.end()));
  auto more = components.url();
  holds(more.has_value(), "added items keep it a URL", components.string());
  if (items.empty()) return;
  holds(URLComponents(*more).queryItems() == longer, "items stay as they are, and new ones follow",
        more->absoluteString());
  holds(more->query()->starts_with(*url.query()), "items stay as they are written",
        more->absoluteString());
}

void checkReference(const URL& base, std::string_view text) {
  auto target = URL::parse(text, base);
  auto alone = URL::parse(std::string(text));
  if (alone && !alone->scheme().empty()) {
    holds(target == alone, "a text with a scheme stands as it is", text);
    return;
  }
  // A base without an authority is a redirect's never.
  if (!target || !base.authority()) return;
  auto expected = resolved(partsOf(base.absoluteString()), partsOf(text));
  auto whole = URL::parse(expected);
  bool isAmbiguous = !partsOf(expected).authority != !target->authority();
  // A port may be written in fewer digits, or left out where it has none.
  holds(
      isAmbiguous || (whole && target->scheme() == whole->scheme() &&
                      target->origin() == whole->origin() && target->path() == whole->path() &&
                      target->query() == whole->query() && target->fragment() == whole->fragment()),
      "a reference is resolved as the standard says",
      std::string(text) + " against " + base.absoluteString() + " is " + target->absoluteString() +
          " and not " + expected);
}

}  // namespace
}  // namespace quenwick::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quenwick;
  fuzz::Input input(data, size);
  const std::string text(input.line());
  auto url = platform::URL::parse(text);
  if (!url) return 0;
  fuzz::holds(url->absoluteString() == text, "a URL's text is kept to the letter", text);
  fuzz::checkParts(*url);
  fuzz::checkComponents(*url);
  auto secure = ensureHTTPS(*url);
  fuzz::holds(secure.scheme() == "https" && secure.path().ends_with(url->path()),
              "every URL has a form with the scheme https", text);
  if (!url->scheme().empty()) fuzz::checkReference(*url, input.line());
  return 0;
}
