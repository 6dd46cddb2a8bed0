#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace quenwick::sandbox {

/// Of ASCII alone, whatever the locale.
constexpr char lowerCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }
constexpr bool isLetter(char c) { return lowerCase(c) >= 'a' && lowerCase(c) <= 'z'; }
constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }

constexpr bool isHexadecimal(char c) { return isDigit(c) || (c >= 'a' && c <= 'f'); }

bool isUTF8(std::string_view bytes);

/// The bytes as UTF-8: as they are, or, if they are none, each byte as the character of its number.
std::string utf8Text(std::string_view bytes);

/// Two digits for each byte, in lower case.
std::string hexadecimal(std::span<const unsigned char> bytes);

/// Random digits, an even number of them.
std::string drawHexadecimal(std::size_t length);

std::string base64(std::string_view bytes);

/// None if the text is not Base64 in its padded form.
std::optional<std::string> bytesOfBase64(std::string_view text);

}  // namespace quenwick::sandbox
