#include "sandbox/ScenarioNode.h"

#include <algorithm>
#include <boost/json.hpp>

#include "sandbox/ScenarioError.h"

namespace json = boost::json;

namespace quenwick::sandbox {

void ScenarioNode::refuse(std::string_view why) const {
  throw ScenarioError((place_.empty() ? "scenario" : place_) + ": " + std::string(why));
}

std::string ScenarioNode::placeOf(std::string_view key) const {
  return place_.empty() ? std::string(key) : place_ + "." + std::string(key);
}

void ScenarioNode::allowOnly(std::initializer_list<std::string_view> keys) const {
  for (const auto& [key, node] : members()) {
    if (std::ranges::find(keys, key) == keys.end()) node.refuse("unknown key");
  }
}

std::optional<ScenarioNode> ScenarioNode::member(std::string_view key) const {
  if (!value_->is_object()) refuse("must be an object");
  const json::value* value = value_->get_object().if_contains(key);
  if (value == nullptr) return std::nullopt;
  return ScenarioNode(*value, placeOf(key));
}

ScenarioNode ScenarioNode::requiredMember(std::string_view key) const {
  auto node = member(key);
  if (!node) refuse("\"" + std::string(key) + "\" is missing");
  return *node;
}

std::vector<std::pair<std::string, ScenarioNode>> ScenarioNode::members() const {
  if (!value_->is_object()) refuse("must be an object");
  std::vector<std::pair<std::string, ScenarioNode>> result;
  for (const auto& [key, value] : value_->get_object()) {
    result.emplace_back(key, ScenarioNode(value, placeOf(key)));
  }
  return result;
}

std::vector<ScenarioNode> ScenarioNode::elements() const {
  if (!value_->is_array()) refuse("must be a list");
  std::vector<ScenarioNode> result;
  for (const json::value& value : value_->get_array()) {
    result.emplace_back(value, place_ + "[" + std::to_string(result.size()) + "]");
  }
  return result;
}

std::string ScenarioNode::text() const {
  if (!value_->is_string()) refuse("must be a text");
  return std::string(value_->get_string());
}

bool ScenarioNode::truth() const {
  if (!value_->is_bool()) refuse("must be true or false");
  return value_->get_bool();
}

std::string ScenarioNode::json() const { return json::serialize(*value_); }

std::uint64_t ScenarioNode::number(std::uint64_t lowest, std::uint64_t highest) const {
  json::error_code error;
  const auto number = value_->to_number<std::uint64_t>(error);
  if (error || number < lowest || number > highest) {
    refuse("must be a whole number from " + std::to_string(lowest) + " to " +
           std::to_string(highest));
  }
  return number;
}

json::value parseScenarioText(std::string_view text) {
  json::stream_parser parser;
  json::error_code error;
  const std::size_t read = parser.write_some(text.data(), text.size(), error);
  if (!error && text.find_first_not_of(" \t\r\n", read) != std::string_view::npos) {
    error = json::error::extra_data;
  }
  if (!error) parser.finish(error);
  if (!error) return parser.release();

  const auto before = text.substr(0, read);
  const auto line = 1 + std::ranges::count(before, '\n');
  const auto column = before.size() - (before.rfind('\n') + 1) + 1;
  throw ScenarioError("line " + std::to_string(line) + ", column " + std::to_string(column) + ": " +
                      error.message());
}

}  // namespace quenwick::sandbox
