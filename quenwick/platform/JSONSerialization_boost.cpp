#include <algorithm>
#include <boost/json/basic_parser_impl.hpp>
#include <charconv>
#include <cmath>
#include <iterator>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "quenwick/platform/JSONSerialization.h"

namespace quenwick::platform {
namespace {

namespace json = boost::json;
using Text = json::string_view;

/// Up to here each key is looked for among those before it.
constexpr std::size_t kFewKeys = 16;

void setInOrder(std::vector<Dictionary::Entry>& entries, Dictionary::Entry entry) {
  auto found = std::ranges::find(entries, entry.key, &Dictionary::Entry::key);
  if (found == entries.end()) {
    entries.push_back(std::move(entry));
  } else {
    found->value = std::move(entry.value);
  }
}

/// The entries as they were first set, each with the last value of its key.
Dictionary dictionaryOf(std::vector<Dictionary::Entry> all) {
  std::vector<Dictionary::Entry> entries;
  entries.reserve(all.size());  // keys that are referred to stay in their place
  if (all.size() <= kFewKeys) {
    for (auto& entry : all) setInOrder(entries, std::move(entry));
    return Dictionary::ofUnique(std::move(entries));
  }
  std::unordered_map<std::string_view, std::size_t> places;
  for (auto& entry : all) {
    auto found = places.find(entry.key);
    if (found == places.end()) {
      entries.push_back(std::move(entry));
      places.emplace(entries.back().key, entries.size() - 1);
    } else {
      entries[found->second].value = std::move(entry.value);
    }
  }
  return Dictionary::ofUnique(std::move(entries));
}

/// Puts together what the parser comes upon. What has been read and not yet taken into a list or
/// an object waits on a stack.
class Reader {
 public:
  static constexpr std::size_t max_array_size = std::string::npos;
  static constexpr std::size_t max_object_size = std::string::npos;
  static constexpr std::size_t max_string_size = std::string::npos;
  static constexpr std::size_t max_key_size = std::string::npos;

  Value take() { return std::move(values_.back()); }

  bool on_document_begin(json::error_code&) { return true; }
  bool on_document_end(json::error_code&) { return true; }
  bool on_array_begin(json::error_code&) { return true; }
  bool on_object_begin(json::error_code&) { return true; }

  bool on_array_end(std::size_t count, json::error_code&) {
    auto begin = values_.end() - static_cast<std::ptrdiff_t>(count);
    List list(std::make_move_iterator(begin), std::make_move_iterator(values_.end()));
    values_.erase(begin, values_.end());
    return add(std::move(list));
  }

  bool on_object_end(std::size_t count, json::error_code&) {
    std::vector<Dictionary::Entry> entries;
    entries.reserve(count);
    auto value = values_.end() - static_cast<std::ptrdiff_t>(count);
    auto key = keys_.end() - static_cast<std::ptrdiff_t>(count);
    for (std::size_t i = 0; i < count; ++i) {
      entries.push_back({std::move(key[static_cast<std::ptrdiff_t>(i)]),
                         std::move(value[static_cast<std::ptrdiff_t>(i)])});
    }
    values_.erase(value, values_.end());
    keys_.erase(key, keys_.end());
    return add(dictionaryOf(std::move(entries)));
  }

  bool on_key_part(Text text, std::size_t, json::error_code&) { return addPart(text); }
  bool on_key(Text text, std::size_t, json::error_code&) {
    keys_.push_back(whole(text));
    return true;
  }
  bool on_string_part(Text text, std::size_t, json::error_code&) { return addPart(text); }
  bool on_string(Text text, std::size_t, json::error_code&) { return add(whole(text)); }
  bool on_number_part(Text text, json::error_code&) { return addPart(text); }
  bool on_int64(std::int64_t number, Text, json::error_code&) {
    part_.clear();
    return add(number);
  }
  bool on_uint64(std::uint64_t number, Text, json::error_code&) {
    part_.clear();
    return add(number);
  }
  bool on_double(double about, Text text, json::error_code&) {
    return add(exactNumber(whole(text), about));
  }
  bool on_bool(bool flag, json::error_code&) { return add(flag); }
  bool on_null(json::error_code&) { return add(nullptr); }
  bool on_comment_part(Text, json::error_code&) { return true; }
  bool on_comment(Text, json::error_code&) { return true; }

 private:
  /// The parser's own number may be a bit or two off: the text is read once more.
  static double exactNumber(const std::string& text, double about) {
    double number = 0;
    auto end = text.data() + text.size();
    auto read = std::from_chars(text.data(), end, number);
    bool isInRange = read.ec == std::errc();
    if (!isInRange && !(std::fabs(about) < 1)) throw JSONError("a number is out of range");
    return isInRange ? number : std::copysign(0.0, about);
  }

  bool add(Value value) {
    values_.push_back(std::move(value));
    return true;
  }
  bool addPart(Text text) {
    part_.append(text.data(), text.size());
    return true;
  }
  std::string whole(Text last) {
    if (part_.empty()) return {last.data(), last.size()};
    addPart(last);
    return std::exchange(part_, {});
  }

  std::vector<Value> values_;
  std::vector<std::string> keys_;
  std::string part_;
};

}  // namespace

Value JSONSerialization::parse(std::string_view text) {
  json::parse_options options;
  options.max_depth = JSONSerialization::maximumDepth;
  json::basic_parser<Reader> parser(options);
  json::error_code error;
  auto read = parser.write_some(false, text.data(), text.size(), error);
  if (!error && read < text.size()) error = json::error::extra_data;
  if (error) throw JSONError("the text is not JSON: " + error.message());
  return parser.handler().take();
}

}  // namespace quenwick::platform
