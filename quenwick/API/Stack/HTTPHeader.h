#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace quenwick {

/// One header field of a request or a response. Any text may stand in it; `setHeaders` of
/// RequestExtensions.h decides what is fit to be sent.
struct HTTPHeader {
  std::string name;
  std::string value;

  static HTTPHeader accept(std::string value);
  static HTTPHeader acceptCharset(std::string value);
  static HTTPHeader acceptLanguage(std::string value);
  static HTTPHeader acceptEncoding(std::string value);
  static HTTPHeader authorization(std::string value);
  /// "Basic " and the Base64 text of user name, ":" and password.
  static HTTPHeader basicAuthorization(std::string_view username, std::string_view password);
  /// "Bearer " and the token.
  static HTTPHeader bearerAuthorization(std::string_view token);
  static HTTPHeader contentDisposition(std::string value);
  static HTTPHeader contentType(std::string value);
  static HTTPHeader userAgent(std::string value);

  /// The headers that every request carries. Each is made on first use and kept for the life of
  /// the process, so that what it is made of must be known by then.
  static const HTTPHeader& defaultAcceptEncoding();
  static const HTTPHeader& defaultAcceptLanguage();
  static const HTTPHeader& defaultUserAgent();

  /// "QuenwickSDK/1.2.0 debian/x86_64/12", made of the install's datapoints; a fallback stands
  /// for each that is missing.
  static std::string userAgentValue(const std::map<std::string, std::string>& datapoints);

  /// The first six of the languages with their weights; empty where there are none.
  static std::string acceptLanguageValue(std::vector<std::string> preferredLanguages);

  /// "name: value".
  std::string description() const;

  /// Both texts as they stand, letter by letter.
  friend bool operator==(const HTTPHeader&, const HTTPHeader&) = default;
};

/// The elements with falling weights, "br;q=1.0, gzip;q=0.9": each is preferred to the next. For
/// ten elements at most, beyond which no weight is left.
std::string qualityEncoded(const std::vector<std::string>& elements);

}  // namespace quenwick

template <>
struct std::hash<quenwick::HTTPHeader> {
  std::size_t operator()(const quenwick::HTTPHeader& header) const noexcept {
    std::hash<std::string> hash;
    return hash(header.name) * 31 + hash(header.value);
  }
};
