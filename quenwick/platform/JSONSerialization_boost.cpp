#include <algorithm>
#include <array>
#include <boost/json.hpp>
#include <charconv>
#include <cmath>

#include "quenwick/platform/JSONSerialization.h"
#include "quenwick/platform/Text.h"

namespace quenwick::platform {
namespace {

namespace json = boost::json;

constexpr std::size_t kMaximumDepth = 512;

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
      : isPretty_(options == JSONWritingOptions::prettyPrinted) {}

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
    out_ += shortestDecimal(number);
  }

  void write(const std::string& text) {
    out_ += '"';
    if (std::ranges::all_of(text, isPlain)) {
      out_ += text;
    } else {
      if (!isUTF8(text)) throw JSONError("a text is not UTF-8");
      for (char c : text) writeCharacter(c);
    }
    out_ += '"';
  }

  /// Whether the character stands for itself, and is UTF-8 alone.
  static bool isPlain(char c) {
    auto byte = static_cast<unsigned char>(c);
    return byte >= 0x20 && byte < 0x80 && c != '"' && c != '\\';
  }

  void writeCharacter(char c) {
    static constexpr std::string_view kControls = "\b\t\n\f\r";
    static constexpr std::string_view kLetters = "btnfr";
    auto byte = static_cast<unsigned char>(c);
    if (isPlain(c) || byte >= 0x80) {
      out_ += c;
    } else if (byte >= 0x20) {
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
