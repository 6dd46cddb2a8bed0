#include "quenwick/API/Stack/HTTPHeaders.h"

#include <algorithm>

#include "quenwick/platform/LogSink.h"
#include "quenwick/platform/Text.h"

namespace quenwick {
namespace {

std::string loweredName(const HTTPHeader& header) { return platform::lowercased(header.name); }

}  // namespace

HTTPHeaders::HTTPHeaders(std::initializer_list<HTTPHeader> headers) {
  for (const auto& header : headers) update(header);
}

HTTPHeaders::HTTPHeaders(const std::vector<HTTPHeader>& headers) {
  for (const auto& header : headers) update(header);
}

HTTPHeaders::HTTPHeaders(const std::map<std::string, std::string>& dictionary) {
  for (const auto& [name, value] : dictionary) update(name, value);
}

const HTTPHeaders& HTTPHeaders::defaultHeaders() {
  platform::HeldLog held;
  static const auto& headers =
      *new HTTPHeaders{HTTPHeader::defaultAcceptEncoding(), HTTPHeader::defaultAcceptLanguage(),
                       HTTPHeader::defaultUserAgent()};
  return headers;
}

HTTPHeaders::Iterator HTTPHeaders::find(std::string_view name) const {
  return std::ranges::find_if(headers_, [name](const HTTPHeader& header) {
    return platform::equalsIgnoringCase(header.name, name);
  });
}

void HTTPHeaders::update(std::string name, std::string value) {
  auto found = find(name);
  if (found == end()) {
    headers_.push_back({std::move(name), std::move(value)});
  } else {
    headers_[static_cast<std::size_t>(found - begin())].value = std::move(value);
  }
}

void HTTPHeaders::remove(std::string_view name) {
  auto found = find(name);
  if (found != end()) headers_.erase(found);
}

// No two names are equal, so that any sort is stable.
void HTTPHeaders::sort() { std::ranges::sort(headers_, {}, loweredName); }

HTTPHeaders HTTPHeaders::sorted() const {
  auto copy = *this;
  copy.sort();
  return copy;
}

std::optional<std::string> HTTPHeaders::value(std::string_view name) const {
  auto found = find(name);
  if (found == end()) return std::nullopt;
  return found->value;
}

void HTTPHeaders::set(std::string name, std::optional<std::string> value) {
  if (value) {
    update(std::move(name), *std::move(value));
  } else {
    remove(name);
  }
}

std::map<std::string, std::string> HTTPHeaders::dictionary() const {
  std::map<std::string, std::string> map;
  for (const auto& [name, value] : headers_) map.emplace(name, value);
  return map;
}

std::string HTTPHeaders::description() const {
  std::string text;
  for (bool isFirst = true; const auto& header : headers_) {
    if (!isFirst) text += '\n';
    isFirst = false;
    text += header.description();
  }
  return text;
}

}  // namespace quenwick
