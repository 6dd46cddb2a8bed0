#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quenwick::platform {

/// A universally unique identifier, kept in its standard text: hyphenated, upper case.
class UUID {
 public:
  /// A random one (version 4).
  static UUID random();

  /// None where the text is not the hyphenated form; either case is read.
  static std::optional<UUID> parse(std::string_view text);

  const std::string& uuidString() const { return text_; }

  friend bool operator==(const UUID&, const UUID&) = default;

 private:
  explicit UUID(std::string text) : text_(std::move(text)) {}

  std::string text_;
};

}  // namespace quenwick::platform
