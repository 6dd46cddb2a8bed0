#include "quenwick/platform/URLRequest.h"

#include <algorithm>
#include <array>

#include "quenwick/platform/Text.h"

namespace quenwick::platform {
namespace {

bool isRedirect(int status) {
  static constexpr std::array kStatuses = {301, 302, 303, 307, 308};
  return std::ranges::find(kStatuses, status) != kStatuses.end();
}

bool becomesGet(int status, const std::string& method) {
  if (method == "GET" || method == "HEAD") return false;
  return status == 303 || ((status == 301 || status == 302) && method == "POST");
}

void removeField(HeaderFields& fields, std::string_view name) {
  std::erase_if(fields,
                [name](const auto& field) { return equalsIgnoringCase(field.first, name); });
}

/// Whether what was sent encrypted would be sent in clear.
bool isDowngrade(const URL& from, const URL& to) {
  return equalsIgnoringCase(from.scheme(), "https") && equalsIgnoringCase(to.scheme(), "http");
}

/// A target as servers send it: blanks and bytes beyond ASCII stand unescaped in many.
std::string escapedTarget(std::string_view target) {
  std::string out;
  out.reserve(target.size());
  for (char c : target) {
    if (c == ' ' || static_cast<unsigned char>(c) >= 0x80) {
      out += percentEncoded(std::string_view(&c, 1), "");
    } else {
      out += c;
    }
  }
  return out;
}

}  // namespace

const std::string* headerField(const HeaderFields& fields, std::string_view name) {
  auto found = std::ranges::find_if(
      fields, [&](const auto& field) { return equalsIgnoringCase(field.first, name); });
  return found == fields.end() ? nullptr : &found->second;
}

bool isCredentialField(std::string_view name) {
  static constexpr std::array kNames = {"authorization", "cookie", "cookie2", "proxy-authorization",
                                        "www-authenticate"};
  return std::ranges::any_of(kNames,
                             [&](const char* each) { return equalsIgnoringCase(name, each); });
}

std::optional<URLRequest> redirectedRequest(const URLRequest& request,
                                            const HTTPURLResponse& response) {
  const auto* target = headerField(response.headerFields, "Location");
  if (!isRedirect(response.statusCode) || !target || !request.url) return std::nullopt;
  auto url = URL::parse(escapedTarget(*target), *request.url);
  if (!url) return std::nullopt;

  auto next = request;
  if (becomesGet(response.statusCode, request.httpMethod.value_or("GET"))) {
    next.httpMethod = "GET";
    next.httpBody.reset();
    for (auto name : {"content-type", "content-length", "content-encoding"}) {
      removeField(next.headerFields, name);
    }
  }
  if (next.httpBody && isDowngrade(*request.url, *url)) return std::nullopt;
  auto isCredential = [](const auto& field) { return isCredentialField(field.first); };
  if (std::ranges::any_of(next.headerFields, isCredential) &&
      url->origin() != request.url->origin()) {
    std::erase_if(next.headerFields, isCredential);
  }
  next.url = std::move(url);
  return next;
}

}  // namespace quenwick::platform
