#include "sandbox/Address.h"

#include <algorithm>

#include "sandbox/Text.h"

namespace quenwick::sandbox {
namespace {

bool isWord(char c) { return isLetter(c) || isDigit(c); }

std::string inLowerCase(std::string_view text) {
  std::string result(text);
  std::ranges::transform(result, result.begin(), lowerCase);
  return result;
}

/// The scheme that the text begins with, in lower case; empty if there is none.
std::string schemeOf(std::string_view text) {
  const auto colon = text.find(':');
  if (colon == std::string_view::npos || colon == 0) return {};
  const auto scheme = text.substr(0, colon);
  const bool valid = isLetter(scheme.front()) && std::ranges::all_of(scheme, [](char c) {
                       return isWord(c) || c == '+' || c == '-' || c == '.';
                     });
  return valid ? inLowerCase(scheme) : std::string();
}

bool isHost(std::string_view host) {
  if (host.starts_with('[')) return host.size() > 2 && host.ends_with(']');
  return !host.empty() && std::ranges::all_of(host, [](char c) {
    return isWord(c) || c == '-' || c == '.' || c == '_';
  });
}

std::string withoutDotSegments(std::string_view path) {
  std::string result;
  while (!path.empty()) {
    const auto next = std::min(path.find('/', 1), path.size());
    const auto segment = path.substr(0, next);
    const bool isLast = next == path.size();
    if (segment == "/..") result.erase(std::min(result.rfind('/'), result.size()));
    if (segment != "/." && segment != "/..")
      result += segment;
    else if (isLast)
      result += '/';
    path.remove_prefix(next);
  }
  return result.empty() ? "/" : result;
}

/// Reads "//host/path" after its scheme was taken off.
std::optional<Address> withAuthority(std::string scheme, std::string_view rest) {
  if (!rest.starts_with("//")) return std::nullopt;
  rest.remove_prefix(2);
  const auto slash = std::min(rest.find('/'), rest.size());
  Address address{std::move(scheme), hostOfAuthority(rest.substr(0, slash)),
                  withoutDotSegments(rest.substr(slash))};
  if (!isHost(address.host)) return std::nullopt;
  return address;
}

}  // namespace

std::optional<Address> parseAddress(std::string_view text) {
  if (schemeOf(text).empty() && (!text.starts_with('/') || text.starts_with("//"))) {
    return std::nullopt;
  }
  return resolve({.scheme = "", .host = "", .path = "/"}, text);
}

std::optional<Address> resolve(const Address& base, std::string_view target) {
  target = target.substr(0, target.find_first_of("?#"));
  if (const std::string scheme = schemeOf(target); !scheme.empty()) {
    Address address{.scheme = scheme, .host = "", .path = "/"};
    if (!address.isServed()) return address;
    return withAuthority(scheme, target.substr(scheme.size() + 1));
  }
  if (target.starts_with("//")) {
    return withAuthority(base.scheme.empty() ? "https" : base.scheme, target);
  }
  Address address = base;
  if (target.starts_with('/')) {
    address.path = withoutDotSegments(target);
  } else if (!target.empty()) {
    const auto folder = base.path.substr(0, base.path.rfind('/') + 1);
    address.path = withoutDotSegments(folder + std::string(target));
  }
  return address;
}

std::string hostOfAuthority(std::string_view authority) {
  if (const auto at = authority.rfind('@'); at != std::string_view::npos) {
    authority.remove_prefix(at + 1);
  }
  const auto bracket = authority.rfind(']');
  const auto colon = authority.find(':', bracket == std::string_view::npos ? 0 : bracket);
  return inLowerCase(authority.substr(0, colon));
}

}  // namespace quenwick::sandbox
