#include "quenwick/platform/Redaction.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>

#include "quenwick/platform/Text.h"

namespace quenwick::platform {
namespace {

constexpr std::string_view kMark = "…";

/// A character of JSON's text as it is read: its UTF-8, and how many bytes it takes there.
struct Character {
  std::string bytes;
  std::size_t length = 1;
};

std::optional<std::uint32_t> unitAt(std::string_view text) {
  if (text.size() < 6 || !text.starts_with("\\u")) return std::nullopt;
  std::uint32_t unit = 0;
  const auto* end = text.data() + 6;
  if (std::from_chars(text.data() + 2, end, unit, 16).ptr != end) return std::nullopt;
  return unit;
}

std::string encoded(std::uint32_t code) {
  auto tail = [code](int shift) { return static_cast<char>(0x80 | ((code >> shift) & 0x3F)); };
  if (code < 0x80) return {static_cast<char>(code)};
  if (code < 0x800) return {static_cast<char>(0xC0 | (code >> 6)), tail(0)};
  if (code < 0x10000) return {static_cast<char>(0xE0 | (code >> 12)), tail(6), tail(0)};
  return {static_cast<char>(0xF0 | (code >> 18)), tail(12), tail(6), tail(0)};
}

Character characterAt(std::string_view text) {
  if (text[0] != '\\' || text.size() < 2) return {{text[0]}, 1};
  if (auto unit = unitAt(text)) {
    auto low = unitAt(text.substr(6));
    bool isPair = *unit >> 10 == 0xD800 >> 10 && low && *low >> 10 == 0xDC00 >> 10;
    if (isPair) return {encoded(0x10000 + ((*unit & 0x3FF) << 10) + (*low & 0x3FF)), 12};
    return {encoded(*unit), 6};
  }
  constexpr std::string_view kLetters = "bfnrt";
  constexpr std::string_view kMeanings = "\b\f\n\r\t";
  auto letter = kLetters.find(text[1]);
  return {{letter == kLetters.npos ? text[1] : kMeanings[letter]}, 2};
}

/// How many bytes at the text's beginning are the secret; none where it does not stand there.
std::size_t lengthAt(std::string_view text, std::string_view secret) {
  if (text.starts_with(secret)) return secret.size();
  std::size_t length = 0;
  while (!secret.empty()) {
    if (length == text.size()) return 0;
    auto character = characterAt(text.substr(length));
    if (!secret.starts_with(character.bytes)) return 0;
    secret.remove_prefix(character.bytes.size());
    length += character.length;
  }
  return length;
}

}  // namespace

std::string redacted(std::string_view text, const std::vector<std::string>& secrets,
                     std::size_t atMost) {
  std::string shown;
  while (!text.empty() && shown.size() <= atMost) {
    std::size_t hidden = 0;
    for (const auto& secret : secrets) hidden = std::max(hidden, lengthAt(text, secret));
    hidden > 0 ? shown.append(kMark) : shown.append(text.substr(0, 1));
    text.remove_prefix(std::max<std::size_t>(hidden, 1));
  }
  return std::string(beginning(shown, atMost));
}

}  // namespace quenwick::platform
