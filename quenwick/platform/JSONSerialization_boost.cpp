#include <algorithm>
#include <array>
#include <boost/json.hpp>
#include <charconv>
#include <cmath>
#include <cstring>

#include "quenwick/platform/JSONSerialization.h"
#include "quenwick/platform/Text.h"

namespace quenwick::platform {
namespace {

namespace json = boost::json;

constexpr std::size_t kMaximumDepth = 512;
constexpr std::size_t kFirstCapacity = 1'024;

Value read(const json::value& value) {
  switch (value.kind()) {
    case json::kind::null:
      return nullptr;
    case json::kind::bool_:
      return value.get_bool();
    case json::kind::int64:
      return value.get_int64();
    case json::kind::uint64:
      return value.get_uint64();
    case json::kind::double_:
      if (!std::isfinite(value.get_double())) throw JSONError("a number is out of range");
      return value.get_double();
    case json::kind::string:
      return std::string_view(value.get_string());
    case json::kind::array: {
      List list;
      list.reserve(value.get_array().size());
      for (const auto& element : value.get_array()) list.push_back(read(element));
      return list;
    }
    case json::kind::object: {
      std::vector<Dictionary::Entry> entries;
      entries.reserve(value.get_object().size());
      for (const auto& [key, element] : value.get_object()) {
        entries.push_back({std::string(key), read(element)});
      }
      return Dictionary::ofUnique(std::move(entries));
    }
  }
  return nullptr;
}

/// Writes a value as JSON text.
class Writer {
 public:
  explicit Writer(JSONWritingOptions options)
      : isPretty_(options == JSONWritingOptions::prettyPrinted) {
    out_.reserve(kFirstCapacity);
  }

  void write(const Value& value) {
    std::visit([this](const auto& kind) { write(kind); }, value.storage());
  }

  void write(const List& list) {
    open('[');
    for (bool isFirst = true; const auto& element : list) {
      separate(isFirst);
      write(element);
    }
    close(']', list.empty());
  }

  void write(const Dictionary& dictionary) {
    open('{');
    for (bool isFirst = true; const auto& [key, element] : dictionary) {
      separate(isFirst);
      write(key);
      out_ += isPretty_ ? ": " : ":";
      write(element);
    }
    close('}', dictionary.empty());
  }

  std::string take() { return std::move(out_); }

 private:
  void write(std::nullptr_t) { out_ += "null"; }
  void write(bool flag) { out_ += flag ? "true" : "false"; }
  void write(std::int64_t number) { writeInteger(number); }
  void write(std::uint64_t number) { writeInteger(number); }

  void writeInteger(auto number) {
    std::array<char, 24> digits;
    auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    out_.append(digits.data(), end);
  }

  void write(double number) {
    if (!std::isfinite(number)) throw JSONError("a number is not finite");
    // Most numbers are short; the longest has more than 300 digits.
    std::array<char, 32> digits;
    auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), number,
                                      std::chars_format::fixed);
    if (error != std::errc()) {
      out_ += shortestDecimal(number);
      return;
    }
    out_.append(digits.data(), end);
    if (std::find(digits.data(), end, '.') == end) out_ += ".0";
  }

  void write(const std::string& text) {
    out_ += '"';
    const char* end = text.data() + text.size();
    bool isASCII = true;
    for (const char* run = text.data();;) {
      const char* at = endOfRun(run, end, isASCII);
      out_.append(run, at);
      if (at == end) break;
      writeEscaped(*at);
      run = at + 1;
    }
    if (!isASCII && !isUTF8(text)) throw JSONError("a text is not UTF-8");
    out_ += '"';
  }

  /// Where the characters that stand for themselves end; notes those beyond ASCII.
  static const char* endOfRun(const char* at, const char* end, bool& isASCII) {
    for (;;) {
      while (end - at >= 8 && isPlain(at)) at += 8;
      if (at == end) return at;
      auto byte = static_cast<unsigned char>(*at);
      if (byte < 0x20 || byte == '"' || byte == '\\') return at;
      if (byte >= 0x80) isASCII = false;
      ++at;
    }
  }

  /// Whether none of the eight bytes is a control character, a quote, a backslash or beyond ASCII.
  static bool isPlain(const char* eight) {
    constexpr std::uint64_t kOnes = 0x0101010101010101;
    std::uint64_t bytes;
    std::memcpy(&bytes, eight, sizeof bytes);
    auto quotes = bytes ^ (kOnes * '"');
    auto backslashes = bytes ^ (kOnes * '\\');
    // The top bit of a byte is set where it is less than what is taken away, or beyond ASCII.
    auto marked = bytes | (bytes - kOnes * 0x20) | (quotes - kOnes) | (backslashes - kOnes);
    return (marked & (kOnes * 0x80)) == 0;
  }

  void writeEscaped(char c) {
    static constexpr std::string_view kControls = "\b\t\n\f\r";
    static constexpr std::string_view kLetters = "btnfr";
    auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20) {
      (out_ += '\\') += c;
    } else if (auto at = kControls.find(c); at != kControls.npos) {
      (out_ += '\\') += kLetters[at];
    } else {
      out_.append("\\u00").append(1, byte < 0x10 ? '0' : '1') += "0123456789abcdef"[byte & 15];
    }
  }

  void open(char bracket) {
    if (++depth_ > kMaximumDepth) throw JSONError("the value is nested too deeply");
    out_ += bracket;
  }

  void close(char bracket, bool isEmpty) {
    --depth_;
    if (!isEmpty) breakLine();
    out_ += bracket;
  }

  void separate(bool& isFirst) {
    if (!isFirst) out_ += ',';
    isFirst = false;
    breakLine();
  }

  void breakLine() {
    if (isPretty_) out_.append(1, '\n').append(depth_ * 2, ' ');
  }

  bool isPretty_;
  std::size_t depth_ = 0;
  std::string out_;
};

std::string textOf(const auto& json, JSONWritingOptions options) {
  Writer writer(options);
  writer.write(json);
  return writer.take();
}

}  // namespace

Value JSONSerialization::parse(std::string_view text) {
  json::parse_options options;
  options.max_depth = kMaximumDepth;
  json::error_code error;
  auto value = json::parse(json::string_view(text.data(), text.size()), error, {}, options);
  if (error) throw JSONError("the text is not JSON: " + error.message());
  return read(value);
}

std::string JSONSerialization::text(const Value& value, JSONWritingOptions options) {
  return textOf(value, options);
}

std::string JSONSerialization::text(const Dictionary& dictionary, JSONWritingOptions options) {
  return textOf(dictionary, options);
}

std::string JSONSerialization::text(const List& list, JSONWritingOptions options) {
  return textOf(list, options);
}

}  // namespace quenwick::platform
