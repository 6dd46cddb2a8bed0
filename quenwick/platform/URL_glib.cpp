#include <glib.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "quenwick/platform/Text.h"
#include "quenwick/platform/URL.h"

namespace quenwick::platform {
namespace {

struct FreeText {
  void operator()(char* text) const { g_free(text); }
};
using OwnedText = std::unique_ptr<char, FreeText>;

// GUri rewrites what it reads: escapes, the case of the scheme, international hosts. It is given
// a mask of the text, in which a letter stands for every byte that it could touch, and only where
// its parts begin and end is taken from it.
std::string masked(std::string_view text) {
  std::string mask(text);
  for (char& c : mask) {
    if (c == '%' || static_cast<unsigned char>(c) >= 0x80 || c == '\\' || c == '^' || c == '`' ||
        c == '{' || c == '|' || c == '}' || c == '"' || c == '<' || c == '>') {
      c = 'x';
    }
  }
  return mask;
}

bool isAcceptable(std::string_view text) {
  auto isBlankOrControl = [](char c) {
    auto byte = static_cast<unsigned char>(c);
    return byte <= 0x20 || byte == 0x7f;
  };
  return !text.empty() && std::ranges::none_of(text, isBlankOrControl) && isUTF8(text);
}

std::size_t length(const char* text) { return text ? std::string_view(text).size() : 0; }

/// What GUri takes a text apart into; null where it has no such part.
struct Pieces {
  explicit Pieces(const std::string& text)
      : isParsed(g_uri_split(text.c_str(), G_URI_FLAGS_ENCODED, &scheme, &user, &host, &port, &path,
                             &query, &fragment, nullptr)) {}
  ~Pieces() {
    for (char* each : {scheme, user, host, path, query, fragment}) g_free(each);
  }
  Pieces(const Pieces&) = delete;
  Pieces& operator=(const Pieces&) = delete;

  char* scheme = nullptr;
  char* user = nullptr;
  char* host = nullptr;
  char* path = nullptr;
  char* query = nullptr;
  char* fragment = nullptr;
  int port = -1;
  bool isParsed = false;
};

/// Where the host begins: behind the user, without the bracket of an IPv6 address. `text` ends with
/// the authority.
std::size_t hostBegin(std::string_view text, std::size_t authority, const char* user) {
  auto begin = authority + (user ? length(user) + 1 : 0);
  return begin < text.size() && text[begin] == '[' ? begin + 1 : begin;
}

// Resolving moves bytes about, so here every byte that GUri could touch is spelt with letters.
constexpr std::string_view kEscape = "~";

std::string spelt(std::string_view text) {
  static constexpr std::string_view kHex = "0123456789abcdef";
  std::string out;
  for (char c : text) {
    auto byte = static_cast<unsigned char>(c);
    bool isPlain = g_ascii_isalnum(c) ||
                   std::string_view(":/?#[]@!$&'()*+,;=-._").find(c) != std::string_view::npos;
    if (isPlain) {
      out += c;
    } else {
      out.append(kEscape) += kHex[byte >> 4];
      out += kHex[byte & 15];
    }
  }
  return out;
}

std::string unspelt(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == kEscape.front() && i + 2 < text.size()) {
      out += static_cast<char>(g_ascii_xdigit_value(text[i + 1]) * 16 +
                               g_ascii_xdigit_value(text[i + 2]));
      i += 2;
    } else {
      out += text[i];
    }
  }
  return out;
}

std::string_view defaultPort(std::string_view scheme) {
  if (scheme == "https") return "443";
  if (scheme == "http") return "80";
  return "";
}

}  // namespace

std::optional<URL> URL::parse(std::string text) {
  if (!isAcceptable(text)) return std::nullopt;
  const auto mask = masked(text);
  const Pieces pieces(mask);
  const auto schemeEnd = length(pieces.scheme);
  // The mask makes letters of what no scheme may hold.
  if (!pieces.isParsed || text.compare(0, schemeEnd, mask, 0, schemeEnd) != 0) return std::nullopt;

  // From the end: what follows the path has one mark before it, and the path's own length says
  // where an authority must have ended.
  URL url(std::move(text));
  std::size_t end = url.text_.size();
  auto takeBack = [&end](Range& range, const char* piece) {
    range = {end - length(piece), end, piece != nullptr};
    end = range.begin - (piece ? 1 : 0);
  };
  takeBack(url.fragment_, pieces.fragment);
  takeBack(url.query_, pieces.query);
  end -= length(pieces.path);
  url.path_ = {end, end + length(pieces.path), true};
  url.scheme_ = {0, schemeEnd, pieces.scheme != nullptr};
  const std::size_t begin = pieces.scheme ? schemeEnd + 1 : 0;
  if (end < begin + 2 || url.text_.compare(begin, 2, "//") != 0) return url;
  url.authority_ = {begin + 2, end, true};
  auto host = hostBegin(std::string_view(url.text_).substr(0, end), begin + 2, pieces.user);
  url.host_ = {host, host + length(pieces.host), length(pieces.host) > 0};
  url.port_ = pieces.port;
  return url;
}

std::optional<URL> URL::parse(std::string_view text, const URL& base) {
  auto own = parse(std::string(text));
  if (own && own->scheme_.isPresent) return own;
  if (!isAcceptable(text) || !base.scheme_.isPresent) return std::nullopt;
  OwnedText resolved(g_uri_resolve_relative(spelt(base.text_).c_str(), spelt(text).c_str(),
                                            G_URI_FLAGS_ENCODED, nullptr));
  if (!resolved) return std::nullopt;
  auto whole = unspelt(resolved.get());
  // The scheme is the base's, in the base's letters.
  whole.replace(0, base.scheme_.end, base.scheme());
  return parse(std::move(whole));
}

std::optional<std::string_view> URL::optionalPart(const Range& range) const {
  if (!range.isPresent) return std::nullopt;
  return part(range);
}

std::optional<std::string_view> URL::authority() const { return optionalPart(authority_); }
std::optional<std::string_view> URL::host() const { return optionalPart(host_); }
std::optional<std::string_view> URL::query() const { return optionalPart(query_); }
std::optional<std::string_view> URL::fragment() const { return optionalPart(fragment_); }

std::string URL::origin() const {
  auto name = lowercased(scheme());
  auto port = port_ >= 0 ? std::to_string(port_) : std::string(defaultPort(name));
  return name + "://" + lowercased(host().value_or("")) + ":" + port;
}

}  // namespace quenwick::platform
