#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "quenwick/platform/URL.h"
#include "quenwick/platform/URLComponents.h"

namespace quenwick {

/// Anything that may yield a URL: a URL itself, a text, or the parts of one.
class URLConvertible {
 public:
  URLConvertible(platform::URL url) : source_(std::move(url)) {}
  URLConvertible(platform::URLComponents components) : source_(std::move(components)) {}
  URLConvertible(std::string text) : source_(std::move(text)) {}
  URLConvertible(std::string_view text) : source_(std::string(text)) {}
  URLConvertible(const char* text) : source_(std::string(text)) {}

  /// Throws `APIError` (`InvalidURL`, with this value) where no URL comes out.
  platform::URL asURL() const;

  /// The text as it was given, parsable or not.
  std::string description() const;

 private:
  std::variant<platform::URL, platform::URLComponents, std::string> source_;
};

}  // namespace quenwick
