#include <boost/json.hpp>
#include <cmath>

#include "quenwick/platform/JSONSerialization.h"

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

}  // namespace

Value JSONSerialization::parse(std::string_view text) {
  json::parse_options options;
  options.max_depth = kMaximumDepth;
  json::error_code error;
  auto value = json::parse(json::string_view(text.data(), text.size()), error, {}, options);
  if (error) throw JSONError("the text is not JSON: " + error.message());
  return read(value);
}

}  // namespace quenwick::platform
