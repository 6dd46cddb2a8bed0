#include "quenwick/API/Stack/URLConvertible.h"

#include <optional>

#include "quenwick/API/Stack/APIError.h"

namespace quenwick {
namespace {

using platform::URL;
using platform::URLComponents;

std::optional<URL> parsed(const URL& url) { return url; }
std::optional<URL> parsed(const URLComponents& components) { return components.url(); }
std::optional<URL> parsed(const std::string& text) { return URL::parse(text); }

std::string text(const URL& url) { return url.absoluteString(); }
std::string text(const URLComponents& components) { return components.string(); }
std::string text(const std::string& given) { return given; }

}  // namespace

URL URLConvertible::asURL() const {
  auto url = std::visit([](const auto& source) { return parsed(source); }, source_);
  if (!url) throw APIError(APIError::InvalidURL{*this});
  return *std::move(url);
}

std::string URLConvertible::description() const {
  return std::visit([](const auto& source) { return text(source); }, source_);
}

}  // namespace quenwick
