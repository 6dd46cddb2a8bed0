#include "sandbox/RepeatedKey.h"

#include <boost/json.hpp>
#include <boost/json/basic_parser_impl.hpp>
#include <set>
#include <utility>
#include <vector>

namespace json = boost::json;

namespace quenwick::sandbox {
namespace {

/// What a parser tells of; it is stopped at a key that the object has already.
class Keys {
 public:
  static constexpr std::size_t max_object_size = json::object::max_size();
  static constexpr std::size_t max_array_size = json::array::max_size();
  static constexpr std::size_t max_key_size = json::string::max_size();
  static constexpr std::size_t max_string_size = json::string::max_size();

  bool on_object_begin(json::error_code&) {
    objects_.emplace_back();
    return true;
  }
  bool on_object_end(std::size_t, json::error_code&) {
    objects_.pop_back();
    return true;
  }
  bool on_key_part(json::string_view part, std::size_t, json::error_code&) {
    key_.append(part.data(), part.size());
    return true;
  }
  bool on_key(json::string_view part, std::size_t, json::error_code& error) {
    key_.append(part.data(), part.size());
    auto key = std::exchange(key_, {});
    if (objects_.back().insert(key).second) return true;
    repeated_ = std::move(key);
    error = json::error::syntax;
    return false;
  }

  bool on_document_begin(json::error_code&) { return true; }
  bool on_document_end(json::error_code&) { return true; }
  bool on_array_begin(json::error_code&) { return true; }
  bool on_array_end(std::size_t, json::error_code&) { return true; }
  bool on_string_part(json::string_view, std::size_t, json::error_code&) { return true; }
  bool on_string(json::string_view, std::size_t, json::error_code&) { return true; }
  bool on_number_part(json::string_view, json::error_code&) { return true; }
  bool on_int64(std::int64_t, json::string_view, json::error_code&) { return true; }
  bool on_uint64(std::uint64_t, json::string_view, json::error_code&) { return true; }
  bool on_double(double, json::string_view, json::error_code&) { return true; }
  bool on_bool(bool, json::error_code&) { return true; }
  bool on_null(json::error_code&) { return true; }
  bool on_comment_part(json::string_view, json::error_code&) { return true; }
  bool on_comment(json::string_view, json::error_code&) { return true; }

  std::optional<std::string> repeated() { return std::move(repeated_); }

 private:
  std::vector<std::set<std::string>> objects_;
  std::string key_;
  std::optional<std::string> repeated_;
};

}  // namespace

std::optional<std::string> repeatedKey(std::string_view json) {
  json::parse_options deep;
  deep.max_depth = 512;
  json::basic_parser<Keys> parser(deep);
  json::error_code error;
  parser.write_some(false, json.data(), json.size(), error);
  return parser.handler().repeated();
}

}  // namespace quenwick::sandbox
