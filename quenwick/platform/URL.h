#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "quenwick/platform/Export.h"

namespace quenwick::platform::inline v0 {

/// A URL by RFC 3986, absolute or relative, of any scheme. Its text is kept to the letter; the
/// parts are views of that text, percent-encoded as they stand there.
class QUENWICK_EXPORT URL {
 public:
  /// None where the text is empty, is not UTF-8, holds a blank or a control character, or breaks
  /// the grammar (a port that is none, an open bracket, a % in the scheme). A stray % elsewhere is
  /// let through.
  static std::optional<URL> parse(std::string text);

  /// The text taken relative to `base`; a text with a scheme of its own stands as it is.
  static std::optional<URL> parse(std::string_view text, const URL& base);

  /// The text, to the letter.
  const std::string& absoluteString() const { return text_; }

  /// As written; empty where there is none.
  std::string_view scheme() const { return part(scheme_); }
  /// User, host and port; none where the URL has no "//".
  std::optional<std::string_view> authority() const;
  /// The host as written, an IPv6 address without its brackets; none where it is missing or empty.
  std::optional<std::string_view> host() const;
  /// As written, percent-encoded; empty where there is none.
  std::string_view path() const { return part(path_); }
  /// What follows the "?", as written; none where there is no "?".
  std::optional<std::string_view> query() const;
  /// What follows the "#", as written; none where there is no "#".
  std::optional<std::string_view> fragment() const;

  /// The scheme in lower case, "//", the host in lower case and the port (the scheme's own where
  /// none is written): equal for two URLs that lie with the same server.
  std::string origin() const;

  friend bool operator==(const URL&, const URL&) = default;

 private:
  struct Range {
    std::size_t begin = 0;
    std::size_t end = 0;
    bool isPresent = false;
    friend bool operator==(const Range&, const Range&) = default;
  };

  explicit URL(std::string text) : text_(std::move(text)) {}
  std::string_view part(const Range& range) const {
    return std::string_view(text_).substr(range.begin, range.end - range.begin);
  }
  std::optional<std::string_view> optionalPart(const Range& range) const;

  std::string text_;
  Range scheme_, authority_, host_, path_, query_, fragment_;
  int port_ = -1;
};

}  // namespace quenwick::platform::inline v0
