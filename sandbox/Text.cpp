#include "sandbox/Text.h"

#include <openssl/evp.h>
#include <openssl/rand.h>

#include <cstdint>
#include <vector>

#include "sandbox/Certificate.h"

namespace quenwick::sandbox {
namespace {

/// The length of the sequence that a byte begins, and the smallest code point that needs it.
struct Sequence {
  std::size_t length;
  std::uint32_t smallest;
  std::uint32_t bits;
};

Sequence sequenceOf(unsigned char lead) {
  if (lead < 0x80) return {1, 0, lead};
  if ((lead & 0xE0U) == 0xC0) return {2, 0x80, lead & 0x1FU};
  if ((lead & 0xF0U) == 0xE0) return {3, 0x800, lead & 0x0FU};
  if ((lead & 0xF8U) == 0xF0) return {4, 0x10000, lead & 0x07U};
  return {0, 0, 0};
}

const unsigned char* data(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

}  // namespace

bool isUTF8(std::string_view bytes) {
  while (!bytes.empty()) {
    auto [length, smallest, point] = sequenceOf(static_cast<unsigned char>(bytes.front()));
    if (length == 0 || length > bytes.size()) return false;
    for (std::size_t i = 1; i < length; ++i) {
      const auto byte = static_cast<unsigned char>(bytes[i]);
      if ((byte & 0xC0U) != 0x80) return false;
      point = point << 6U | (byte & 0x3FU);
    }
    const bool isSurrogate = point >= 0xD800 && point <= 0xDFFF;
    if (point < smallest || point > 0x10FFFF || isSurrogate) return false;
    bytes.remove_prefix(length);
  }
  return true;
}

std::string utf8Text(std::string_view bytes) {
  if (isUTF8(bytes)) return std::string(bytes);
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      text += c;
    } else {
      text += static_cast<char>(0xC0U | byte >> 6U);
      text += static_cast<char>(0x80U | (byte & 0x3FU));
    }
  }
  return text;
}

std::string hexadecimal(std::span<const unsigned char> bytes) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text;
  for (const unsigned char byte : bytes) {
    text += digits[byte >> 4U];
    text += digits[byte & 0xFU];
  }
  return text;
}

std::string drawHexadecimal(std::size_t length) {
  std::vector<unsigned char> bytes(length / 2);
  requireOpenSSL(RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) == 1, "draw a number");
  return hexadecimal(bytes);
}

std::string base64(std::string_view bytes) {
  std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
  const int length = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), data(bytes),
                                     static_cast<int>(bytes.size()));
  text.resize(static_cast<std::size_t>(length));
  return text;
}

std::optional<std::string> bytesOfBase64(std::string_view text) {
  const auto end = text.find_last_not_of('=');
  const std::size_t padding = text.size() - (end == std::string_view::npos ? 0 : end + 1);
  if (text.size() % 4 != 0 || padding > 2) return std::nullopt;
  std::string bytes(text.size() / 4 * 3 + 1, '\0');
  const int length = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()), data(text),
                                     static_cast<int>(text.size()));
  if (length < 0) return std::nullopt;
  bytes.resize(static_cast<std::size_t>(length) - padding);
  return bytes;
}

}  // namespace quenwick::sandbox
