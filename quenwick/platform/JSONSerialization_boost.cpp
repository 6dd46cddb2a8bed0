#include <boost/json.hpp>
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
    if (depth_ > kMaximumDepth) throw JSONError("the value is nested too deeply");
    std::visit([this](const auto& kind) { writeKind(kind); }, value.storage());
  }

  std::string take() { return std::move(out_); }

 private:
  void writeKind(std::nullptr_t) { out_ += "null"; }
  void writeKind(bool flag) { out_ += flag ? "true" : "false"; }
  void writeKind(std::int64_t number) { out_ += std::to_string(number); }
  void writeKind(std::uint64_t number) { out_ += std::to_string(number); }

  void writeKind(double number) {
    if (!std::isfinite(number)) throw JSONError("a number is not finite");
    out_ += shortestDecimal(number);
  }

  void writeKind(const std::string& text) {
    if (!isUTF8(text)) throw JSONError("a text is not UTF-8");
    out_ += json::serialize(json::string_view(text.data(), text.size()));
  }

  void writeKind(const List& list) {
    open('[');
    for (bool isFirst = true; const auto& element : list) {
      separate(isFirst);
      write(element);
    }
    close(']', list.empty());
  }

  void writeKind(const Dictionary& dictionary) {
    open('{');
    for (bool isFirst = true; const auto& [key, element] : dictionary) {
      separate(isFirst);
      writeKind(key);
      out_ += isPretty_ ? ": " : ":";
      write(element);
    }
    close('}', dictionary.empty());
  }

  void open(char bracket) {
    out_ += bracket;
    ++depth_;
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
  Writer writer(options);
  writer.write(value);
  return writer.take();
}

}  // namespace quenwick::platform
