#include <glib.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <memory>

#include "quenwick/platform/Text.h"

namespace quenwick::platform {
namespace {

constexpr std::string_view kHexDigits = "0123456789ABCDEF";

void appendEscaped(std::string& out, gunichar character) {
  switch (character) {
    case '\0':
      out += "\\0";
      return;
    case '\n':
      out += "\\n";
      return;
    case '\r':
      out += "\\r";
      return;
    case '\t':
      out += "\\t";
      return;
    default:
      break;
  }
  std::array<char, 8> digits{};
  auto end = std::to_chars(digits.data(), digits.data() + digits.size(), character, 16).ptr;
  out.append("\\u{").append(digits.data(), end).append("}");
}

bool isControl(gunichar character) {
  return character < 0x20 || (character >= 0x7f && character < 0xa0);
}

std::string escaped(std::string_view text, std::string_view alsoEscaped) {
  std::string out;
  out.reserve(text.size() + 2);
  while (!text.empty()) {
    auto character = text.front() == '\0'
                         ? 0
                         : g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
    if (character >= 0x110000) {  // not a character: one byte at a time
      auto byte = static_cast<unsigned char>(text.front());
      out.append("\\x") += kHexDigits[byte >> 4];
      out += kHexDigits[byte & 15];
      text.remove_prefix(1);
      continue;
    }
    auto length =
        character == 0 ? 1U : static_cast<std::size_t>(g_unichar_to_utf8(character, nullptr));
    if (isControl(character)) {
      appendEscaped(out, character);
    } else {
      if (length == 1 && alsoEscaped.find(text.front()) != alsoEscaped.npos) out += '\\';
      out.append(text.substr(0, length));
    }
    text.remove_prefix(length);
  }
  return out;
}

int hexValue(char digit) { return g_ascii_xdigit_value(digit); }

/// Most texts are, which takes a fraction of the time to see.
bool isASCII(std::string_view text) {
  unsigned bits = 0;
  for (char c : text) bits |= static_cast<unsigned char>(c);
  return bits < 0x80;
}

}  // namespace

bool isUTF8(std::string_view bytes) {
  if (isASCII(bytes)) return true;
  for (;;) {  // GLib takes a zero byte for the end of the text; here it is a character
    auto zero = bytes.find('\0');
    auto piece = bytes.substr(0, zero);
    if (!g_utf8_validate_len(piece.data(), piece.size(), nullptr)) return false;
    if (zero == bytes.npos) return true;
    bytes.remove_prefix(zero + 1);
  }
}

std::string madeUTF8(std::string_view text) {
  if (isUTF8(text)) return std::string(text);
  std::string valid;
  for (;;) {  // to GLib a zero byte is none of UTF-8
    auto zero = text.find('\0');
    auto piece = text.substr(0, zero);
    std::unique_ptr<char, decltype(&g_free)> made(
        g_utf8_make_valid(piece.data(), static_cast<gssize>(piece.size())), &g_free);
    valid += made.get();
    if (zero == text.npos) return valid;
    valid += '\0';
    text.remove_prefix(zero + 1);
  }
}

std::string escapedControls(std::string_view text) { return escaped(text, ""); }

std::string_view beginning(std::string_view text, std::size_t atMost) {
  constexpr std::size_t kLongestRest = 3;  // of a character, behind its first byte
  auto end = std::min(atMost, text.size());
  auto begin = end;
  while (begin > 0 && begin < text.size() && (text[begin] & 0xC0) == 0x80) --begin;
  return text.substr(0, end - begin <= kLongestRest ? begin : end);
}

std::string shown(std::string_view text, std::size_t atMost) {
  return escapedControls(beginning(text, atMost));
}

std::string debugQuoted(std::string_view text) { return '"' + escaped(text, "\"\\") + '"'; }

std::string percentDecoded(std::string_view text) {
  if (text.find('%') == text.npos) return std::string(text);
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size() && hexValue(text[i + 1]) >= 0 &&
        hexValue(text[i + 2]) >= 0) {
      out += static_cast<char>(hexValue(text[i + 1]) * 16 + hexValue(text[i + 2]));
      i += 2;
    } else {
      out += text[i];
    }
  }
  return isUTF8(out) ? out : std::string(text);
}

std::string percentEncoded(std::string_view text, std::string_view allowed) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    auto byte = static_cast<unsigned char>(c);
    bool unreserved = g_ascii_isalnum(c) || c == '-' || c == '.' || c == '_' || c == '~';
    if (unreserved || allowed.find(c) != allowed.npos) {
      out += c;
    } else {
      out += '%';
      out += kHexDigits[byte >> 4];
      out += kHexDigits[byte & 15];
    }
  }
  return out;
}

std::string base64Encoded(std::string_view bytes) {
  if (bytes.empty()) return {};
  std::unique_ptr<char, decltype(&g_free)> text(
      g_base64_encode(reinterpret_cast<const guchar*>(bytes.data()), bytes.size()), &g_free);
  return text.get();
}

std::string base64Decoded(const std::string& text) {
  gsize size = 0;
  std::unique_ptr<guchar, decltype(&g_free)> bytes(g_base64_decode(text.c_str(), &size), &g_free);
  return {reinterpret_cast<const char*>(bytes.get()), size};
}

bool holdsCertificate(std::string_view text) {
  return text.find("-----BEGIN CERTIFICATE-----") != text.npos;
}

std::string sha256(std::string_view bytes) {
  std::unique_ptr<char, decltype(&g_free)> text(
      g_compute_checksum_for_data(G_CHECKSUM_SHA256, reinterpret_cast<const guchar*>(bytes.data()),
                                  bytes.size()),
      &g_free);
  return text.get();
}

std::string lowercased(std::string_view text) {
  std::string out(text);
  for (char& c : out) c = g_ascii_tolower(c);
  return out;
}

bool equalsIgnoringCase(std::string_view left, std::string_view right) {
  return std::ranges::equal(left, right, {}, g_ascii_tolower, g_ascii_tolower);
}

std::string shortestDecimal(double number) {
  std::array<char, 400> digits{};
  auto end =
      std::to_chars(digits.data(), digits.data() + digits.size(), number, std::chars_format::fixed)
          .ptr;
  std::string text(digits.data(), end);
  if (text.find_first_of(".n") == text.npos) text += ".0";
  return text;
}

std::optional<double> parsedDouble(std::string_view text) {
  std::string owned(text);
  if (owned.empty() || g_ascii_isspace(owned.front()) || owned.front() == '\v') return std::nullopt;
  char* end = nullptr;
  double number = g_ascii_strtod(owned.c_str(), &end);
  return end == owned.data() + owned.size() ? std::optional(number) : std::nullopt;
}

}  // namespace quenwick::platform
