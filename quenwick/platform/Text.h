#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "quenwick/platform/Export.h"

namespace quenwick::platform {

/// Whether the bytes are well-formed UTF-8. A zero byte is a character like another.
bool isUTF8(std::string_view bytes);

/// The text with every byte that is not UTF-8 replaced by the replacement character; zero bytes
/// stay.
std::string madeUTF8(std::string_view text);

/// The text with control characters (C0, DEL, C1) as \n, \r, \t or \u{..}, and bytes that are not
/// UTF-8 as \x...
std::string escapedControls(std::string_view text);

/// The text's first bytes, without the part of a character.
std::string_view beginning(std::string_view text, std::size_t atMost);

/// A text from outside as a line of the log may show it: `escapedControls` of its beginning.
std::string shown(std::string_view text, std::size_t atMost = 200);

/// The text as debug printing shows it: in double quotes, with quotes, backslashes and control
/// characters escaped.
std::string debugQuoted(std::string_view text);

/// The text with every %XX replaced by its byte. A stray % stays; when the outcome is not UTF-8
/// the text is returned as it was.
std::string percentDecoded(std::string_view text);

/// The text with every byte that is not an unreserved character of RFC 3986 or in `allowed`
/// written as %XX.
std::string percentEncoded(std::string_view text, std::string_view allowed);

std::string base64Encoded(std::string_view bytes);

/// The bytes that the text stands for; what is no Base64 in it is passed over.
std::string base64Decoded(const std::string& text);

/// Whether the text has a certificate in it, as PEM.
bool holdsCertificate(std::string_view text);

/// The SHA-256 sum of the bytes as 64 hexadecimal digits.
std::string sha256(std::string_view bytes);

/// Lower case of the ASCII letters; other bytes stay. The same in every locale.
QUENWICK_TOOLKIT_EXPORT std::string lowercased(std::string_view text);

/// Whether the texts are equal but for the case of ASCII letters.
bool equalsIgnoringCase(std::string_view left, std::string_view right);

/// The shortest decimal text that reads back as the same number, with at least one digit after
/// the point ("1.0", "0.9"). The same in every locale.
std::string shortestDecimal(double number);

/// The number that the whole text is, decimal or hexadecimal, infinities and "nan" included; none
/// for any other text, one with blanks around the number too. The same in every locale.
std::optional<double> parsedDouble(std::string_view text);

}  // namespace quenwick::platform
