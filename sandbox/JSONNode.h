#pragma once

#include <boost/json/value.hpp>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quenwick::sandbox {

/// What is wrong with a JSON value, and at which place: "links[0].chain[1].status".
class JSONError : public std::runtime_error {
 public:
  JSONError(std::string place, std::string_view why)
      : std::runtime_error(place + ": " + std::string(why)), place_(std::move(place)) {}

  const std::string& place() const { return place_; }

  /// The reason alone, without the place.
  std::string why() const { return what() + place_.size() + 2; }

 private:
  std::string place_;
};

/// A JSON value that knows where it stands: whatever does not fit is refused by a `JSONError` that
/// names the place. Valid as long as the parsed value.
class JSONNode {
 public:
  /// `name` is what the outermost value is called where it is itself refused.
  JSONNode(const boost::json::value& value, std::string_view name) : value_(&value), name_(name) {}

  [[noreturn]] void refuse(std::string_view why) const;

  /// Refuses anything but an object, and keys that are not among these.
  void allowOnly(std::initializer_list<std::string_view> keys) const;

  /// Refuses anything but an object with these keys and no others.
  void require(std::initializer_list<std::string_view> keys) const;

  std::optional<JSONNode> member(std::string_view key) const;
  JSONNode requiredMember(std::string_view key) const;

  std::vector<std::pair<std::string, JSONNode>> members() const;
  std::vector<JSONNode> elements() const;

  /// Another value in this one's place.
  JSONNode withValue(const boost::json::value& value) const;

  const boost::json::value& value() const { return *value_; }
  bool isObject() const { return value_->is_object(); }
  std::string text() const;
  bool truth() const;

  /// The value as JSON, whatever it is.
  std::string json() const;

  /// A whole number, written as one: 5.0 is none.
  std::int64_t integer() const;
  std::uint64_t number(std::uint64_t lowest, std::uint64_t highest) const;

 private:
  JSONNode nodeAt(std::string place, const boost::json::value& value) const;
  std::string placeOf(std::string_view key) const;

  const boost::json::value* value_;
  std::string_view name_;
  std::string place_;
};

/// Parses JSON; throws a `JSONError` whose place is line and column.
boost::json::value parseJSON(std::string_view text);

}  // namespace quenwick::sandbox
