#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quenwick/platform/URL.h"

namespace quenwick::platform {

/// One name and value of a query, percent-decoded. The value is none where no "=" follows the
/// name, and empty where nothing follows the "=".
struct URLQueryItem {
  std::string name;
  std::optional<std::string> value;
  friend bool operator==(const URLQueryItem&, const URLQueryItem&) = default;
};

/// The parts of a URL, to be read decoded, changed, and put together again.
class URLComponents {
 public:
  explicit URLComponents(const URL& url);

  std::string scheme;
  std::optional<std::string> percentEncodedAuthority;
  std::string percentEncodedPath;
  std::optional<std::string> percentEncodedQuery;
  std::optional<std::string> percentEncodedFragment;

  /// The path, percent-decoded.
  std::string path() const;

  /// The query's items in their order; empty where there is no query.
  std::vector<URLQueryItem> queryItems() const;

  /// Adds the items behind those that are there, which stay as they are written.
  void appendQueryItems(const std::vector<URLQueryItem>& items);

  /// The first item of that exact name in the URL's query, or none.
  static std::optional<URLQueryItem> queryItem(const URL& url, std::string_view name);

  /// The parts put together; none where they make no URL.
  std::optional<URL> url() const;

  /// The text that `url` is made of.
  std::string string() const;
};

}  // namespace quenwick::platform
