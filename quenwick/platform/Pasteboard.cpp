#include "quenwick/platform/Pasteboard.h"

#include <utility>

#include "quenwick/platform/Replaceable.h"
#include "quenwick/platform/WebURL.h"

namespace quenwick::platform {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

Replaceable<Pasteboard>& current() {
  static auto& instance = *new Replaceable<Pasteboard>;
  return instance;
}

bool leadsToTheWeb(const URL& url) { return hasWebScheme(url) && url.host(); }

}  // namespace

Task<std::optional<URL>> Pasteboard::probableWebURL() {
  if (co_await hasURLs()) {
    auto offered = co_await url();
    if (offered && leadsToTheWeb(*offered)) co_return offered;
  }
  if (!co_await hasStrings()) co_return std::nullopt;
  auto text = co_await string();
  co_return text ? platform::probableWebURL(*text) : std::nullopt;
}

std::shared_ptr<Pasteboard> Pasteboard::general() { return current().get(); }

void Pasteboard::setGeneral(std::shared_ptr<Pasteboard> pasteboard) {
  current().replace(std::move(pasteboard));
}

std::optional<URL> probableWebURL(std::string_view text) {
  auto begin = text.find_first_not_of(kBlanks);
  if (begin == text.npos) return std::nullopt;
  auto end = text.find_last_not_of(kBlanks);
  auto url = URL::parse(std::string(text.substr(begin, end - begin + 1)));
  return url && leadsToTheWeb(*url) ? url : std::nullopt;
}

}  // namespace quenwick::platform
