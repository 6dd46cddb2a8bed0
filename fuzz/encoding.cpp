// Letters for the encoding, and parameters as JSON. "n" leaves the brackets of lists out, "l"
// writes booleans as words.

#include <glib.h>

#include <algorithm>
#include <vector>

#include "fuzz/Target.h"
#include "quenwick/API/Stack/JSONEncoding.h"
#include "quenwick/API/Stack/URLEncoding.h"
#include "quenwick/platform/JSONSerialization.h"
#include "quenwick/platform/Text.h"

namespace quenwick::fuzz {
namespace {

using platform::Dictionary;
using platform::Value;
using Items = std::vector<std::pair<std::string, std::string>>;

/// The items that a reader of the query is to find.
void collect(const URLEncoding& encoding, const std::string& key, const Value& value,
             Items& items) {
  if (const auto* object = value.as<Dictionary>()) {
    for (const auto& [name, each] : *object) {
      collect(encoding, std::string(key).append("[").append(name).append("]"), each, items);
    }
  } else if (const auto* list = value.as<platform::List>()) {
    bool hasBrackets = encoding.arrayEncoding == URLEncoding::ArrayEncoding::brackets;
    for (const auto& each : *list) collect(encoding, hasBrackets ? key + "[]" : key, each, items);
  } else if (const auto* text = value.as<std::string>()) {
    items.emplace_back(key, *text);
  } else if (const auto* flag = value.as<bool>()) {
    bool isWord = encoding.boolEncoding == URLEncoding::BoolEncoding::literal;
    items.emplace_back(key, *flag ? (isWord ? "true" : "1") : (isWord ? "false" : "0"));
  } else if (const auto* real = value.as<double>()) {
    items.emplace_back(key, platform::shortestDecimal(*real));
  } else {
    items.emplace_back(key, platform::JSONSerialization::text(value));
  }
}

Items itemsOf(const URLEncoding& encoding, const Dictionary& parameters) {
  std::vector<std::string> keys;
  for (const auto& [key, value] : parameters) keys.push_back(key);
  std::ranges::sort(keys);
  Items items;
  for (const auto& key : keys) collect(encoding, key, *parameters.find(key), items);
  return items;
}

bool hasZero(const Items& items) {
  return std::ranges::any_of(items, [](const auto& item) {
    return item.first.find('\0') != item.first.npos || item.second.find('\0') != item.second.npos;
  });
}

/// The items as GLib's reader of forms finds them.
Items readBack(const std::string& query) {
  Items items;
  GUriParamsIter reader;
  g_uri_params_iter_init(&reader, query.c_str(), -1, "&", G_URI_PARAMS_WWW_FORM);
  char* name = nullptr;
  char* value = nullptr;
  GError* error = nullptr;
  while (g_uri_params_iter_next(&reader, &name, &value, &error)) {
    items.emplace_back(name, value);
    g_free(name);
    g_free(value);
  }
  holds(!error, "a reader of forms reads the query", query);
  return items;
}

void checkForm(const URLEncoding& encoding, const Dictionary& parameters) {
  const auto query = encoding.query(parameters);
  const auto items = itemsOf(encoding, parameters);
  const auto isPlain = [](char c) {
    return g_ascii_isalnum(c) || std::string_view("-._~/?%=&").find(c) != std::string_view::npos;
  };
  holds(std::ranges::all_of(query, isPlain), "a query holds only what needs no escape", query);
  // GLib takes no zero byte.
  if (!hasZero(items)) holds(readBack(query) == items, "a reader of forms finds the items", query);

  platform::URLRequest request{.url = platform::URL::parse("https://h/p?k=v%2f#f")};
  auto url = encoding.encode(request, parameters).url;
  auto expected =
      parameters.empty() ? "https://h/p?k=v%2f#f" : "https://h/p?k=v%2f&" + query + "#f";
  holds(url && url->absoluteString() == expected, "a query keeps what was there", query);
}

void checkJSON(const Dictionary& parameters) {
  for (const auto& encoding : {JSONEncoding::defaultEncoding, JSONEncoding::prettyPrinted}) {
    auto body = encoding.encode(platform::URLRequest(), parameters).httpBody;
    holds(body && platform::JSONSerialization::parse(*body) == Value(parameters),
          "a JSON body reads back as it was", body.value_or(""));
  }
}

}  // namespace
}  // namespace quenwick::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quenwick;
  fuzz::Input input(data, size);
  const auto letters = input.line();
  URLEncoding encoding;
  if (letters.find('n') != letters.npos) {
    encoding.arrayEncoding = URLEncoding::ArrayEncoding::noBrackets;
  }
  if (letters.find('l') != letters.npos) encoding.boolEncoding = URLEncoding::BoolEncoding::literal;
  try {
    auto value = platform::JSONSerialization::parse(input.rest());
    const auto* parameters = value.as<platform::Dictionary>();
    if (!parameters) return 0;
    fuzz::checkForm(encoding, *parameters);
    fuzz::checkJSON(*parameters);
  } catch (const platform::JSONError&) {
    return 0;
  }
  return 0;
}
