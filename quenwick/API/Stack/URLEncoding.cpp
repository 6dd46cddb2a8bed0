#include "quenwick/API/Stack/URLEncoding.h"

#include <algorithm>
#include <ranges>
#include <type_traits>
#include <utility>
#include <vector>

#include "quenwick/API/Stack/APIError.h"
#include "quenwick/API/Stack/RequestExtensions.h"
#include "quenwick/platform/Text.h"
#include "quenwick/platform/URLComponents.h"

namespace quenwick {
namespace {

using platform::Dictionary;
using platform::List;
using platform::Value;

constexpr std::string_view kQueryAllowed = "/?";
constexpr auto kContentType = "Content-Type";
constexpr auto kFormType = "application/x-www-form-urlencoded; charset=utf-8";

/// The text of a value that holds no others.
std::string textOf(const Value& value, URLEncoding::BoolEncoding booleans) {
  return std::visit(
      [booleans](const auto& kind) -> std::string {
        using Kind = std::remove_cvref_t<decltype(kind)>;
        if constexpr (std::is_same_v<Kind, bool>) {
          return std::string(encode(booleans, kind));
        } else if constexpr (std::is_same_v<Kind, double>) {
          return platform::shortestDecimal(kind);
        } else if constexpr (std::is_integral_v<Kind>) {
          return std::to_string(kind);
        } else if constexpr (std::is_same_v<Kind, std::string>) {
          return kind;
        } else {
          return "null";
        }
      },
      value.storage());
}

/// Writes the items of a query. Values yet to be written wait on a stack of its own, so that no
/// depth of nesting can exhaust the thread's; the keys that lead to a value are one text.
class QueryWriter {
 public:
  explicit QueryWriter(const URLEncoding& encoding) : encoding_(encoding) {}

  void write(const std::string& key, const Value& value) {
    waiting_.push_back({.parentLength = 0, .suffix = queryEscaped(key), .value = &value});
    while (!waiting_.empty()) {
      auto next = std::move(waiting_.back());
      waiting_.pop_back();
      key_.resize(next.parentLength);
      key_ += next.suffix;
      writeOrPush(*next.value);
    }
  }

  std::string take() { return std::move(out_); }

 private:
  struct Waiting {
    std::size_t parentLength;
    std::string suffix;
    const Value* value;
  };

  void writeOrPush(const Value& value) {
    if (const auto* map = value.as<Dictionary>()) {
      for (const auto& entry : std::views::reverse(*map)) {
        push(queryEscaped("[" + entry.key + "]"), entry.value);
      }
    } else if (const auto* list = value.as<List>()) {
      auto suffix = queryEscaped(quenwick::encode(encoding_.arrayEncoding, ""));
      for (const auto& element : std::views::reverse(*list)) push(suffix, element);
    } else {
      if (!out_.empty()) out_ += '&';
      out_ += key_;
      out_ += '=';
      out_ += queryEscaped(textOf(value, encoding_.boolEncoding));
    }
  }

  void push(std::string suffix, const Value& value) {
    waiting_.push_back({key_.size(), std::move(suffix), &value});
  }

  const URLEncoding& encoding_;
  std::vector<Waiting> waiting_;
  std::string key_;
  std::string out_;
};

void appendQuery(std::optional<platform::URL>& url, const std::string& query) {
  platform::URLComponents components(*url);
  auto& old = components.percentEncodedQuery;
  old = old ? *old + "&" + query : query;
  url = components.url();
}

}  // namespace

bool encodesParametersInURL(URLEncoding::Destination destination, const HTTPMethod& method) {
  switch (destination) {
    case URLEncoding::Destination::methodDependent:
      break;
    case URLEncoding::Destination::queryString:
      return true;
    case URLEncoding::Destination::httpBody:
      return false;
  }
  return method == HTTPMethod::get || method == HTTPMethod::head || method == HTTPMethod::delete_;
}

std::string encode(URLEncoding::ArrayEncoding encoding, std::string_view key) {
  std::string text(key);
  if (encoding == URLEncoding::ArrayEncoding::brackets) text += "[]";
  return text;
}

std::string_view encode(URLEncoding::BoolEncoding encoding, bool value) {
  if (encoding == URLEncoding::BoolEncoding::literal) return value ? "true" : "false";
  return value ? "1" : "0";
}

std::string queryEscaped(std::string_view text) {
  return platform::percentEncoded(text, kQueryAllowed);
}

std::string URLEncoding::query(const Dictionary& parameters) const {
  std::vector<const Dictionary::Entry*> sorted;
  for (const auto& entry : parameters) sorted.push_back(&entry);
  std::ranges::sort(sorted, {}, &Dictionary::Entry::key);
  QueryWriter writer(*this);
  for (const auto* entry : sorted) writer.write(entry->key, entry->value);
  return writer.take();
}

platform::URLRequest URLEncoding::encode(platform::URLRequest request,
                                         const std::optional<Dictionary>& parameters) const {
  if (!parameters) return request;
  if (encodesParametersInURL(destination, method(request).value_or(HTTPMethod::get))) {
    if (!request.url) {
      throw APIError(APIError::ParameterEncodingFailed{
          {APIError::ParameterEncodingFailureReason::MissingURL{}}});
    }
    auto text = query(*parameters);
    if (!parameters->empty()) appendQuery(request.url, text);
    return request;
  }
  if (!platform::headerField(request.headerFields, kContentType)) {
    request.headerFields.emplace_back(kContentType, kFormType);
  }
  request.httpBody = query(*parameters);
  return request;
}

}  // namespace quenwick
