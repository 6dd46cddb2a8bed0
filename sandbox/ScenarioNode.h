#pragma once

#include <boost/json/value.hpp>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quenwick::sandbox {

/// A value of a scenario that knows where it stands: whatever does not fit is refused by a
/// `ScenarioError` that names the place. Valid as long as the parsed text.
class ScenarioNode {
 public:
  ScenarioNode(const boost::json::value& value, std::string place)
      : value_(&value), place_(std::move(place)) {}

  [[noreturn]] void refuse(std::string_view why) const;

  /// Refuses anything but an object, and keys that are not among these.
  void allowOnly(std::initializer_list<std::string_view> keys) const;

  std::optional<ScenarioNode> member(std::string_view key) const;
  ScenarioNode requiredMember(std::string_view key) const;

  std::vector<std::pair<std::string, ScenarioNode>> members() const;
  std::vector<ScenarioNode> elements() const;

  const std::string& place() const { return place_; }
  std::string text() const;
  bool truth() const;

  /// The value as JSON, whatever it is.
  std::string json() const;

  std::uint64_t number(std::uint64_t lowest, std::uint64_t highest) const;

 private:
  std::string placeOf(std::string_view key) const;

  const boost::json::value* value_;
  std::string place_;
};

/// Parses JSON; throws a `ScenarioError` that names line and column.
boost::json::value parseScenarioText(std::string_view text);

}  // namespace quenwick::sandbox
