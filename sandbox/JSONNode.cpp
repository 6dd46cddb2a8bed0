#include "sandbox/JSONNode.h"

#include <algorithm>
#include <boost/json.hpp>

#include "sandbox/RepeatedKey.h"

namespace json = boost::json;

namespace quenwick::sandbox {
namespace {

constexpr std::size_t kDeepest = 512;

}  // namespace

void JSONNode::refuse(std::string_view why) const {
  throw JSONError(place_.empty() ? std::string(name_) : place_, why);
}

std::string JSONNode::placeOf(std::string_view key) const {
  return place_.empty() ? std::string(key) : place_ + "." + std::string(key);
}

JSONNode JSONNode::nodeAt(std::string place, const json::value& value) const {
  JSONNode node(value, name_);
  node.place_ = std::move(place);
  return node;
}

JSONNode JSONNode::withValue(const json::value& value) const { return nodeAt(place_, value); }

void JSONNode::allowOnly(std::initializer_list<std::string_view> keys) const {
  if (!isObject()) refuse("must be an object");
  for (const auto& [key, value] : value_->get_object()) {
    if (std::ranges::find(keys, std::string_view(key)) == keys.end())
      nodeAt(placeOf(key), value).refuse("unknown key");
  }
}

void JSONNode::require(std::initializer_list<std::string_view> keys) const {
  allowOnly(keys);
  for (const auto key : keys) requiredMember(key);
}

std::optional<JSONNode> JSONNode::member(std::string_view key) const {
  if (!isObject()) refuse("must be an object");
  const json::value* value = value_->get_object().if_contains(key);
  if (value == nullptr) return std::nullopt;
  return nodeAt(placeOf(key), *value);
}

JSONNode JSONNode::requiredMember(std::string_view key) const {
  auto node = member(key);
  if (!node) throw JSONError(placeOf(key), "is missing");
  return *node;
}

std::vector<std::pair<std::string, JSONNode>> JSONNode::members() const {
  if (!isObject()) refuse("must be an object");
  std::vector<std::pair<std::string, JSONNode>> result;
  for (const auto& [key, value] : value_->get_object()) {
    result.emplace_back(key, nodeAt(placeOf(key), value));
  }
  return result;
}

std::vector<JSONNode> JSONNode::elements() const {
  if (!value_->is_array()) refuse("must be a list");
  std::vector<JSONNode> result;
  for (const json::value& value : value_->get_array()) {
    result.push_back(nodeAt(place_ + "[" + std::to_string(result.size()) + "]", value));
  }
  return result;
}

std::string JSONNode::text() const {
  if (!value_->is_string()) refuse("must be a text");
  return std::string(value_->get_string());
}

bool JSONNode::truth() const {
  if (!value_->is_bool()) refuse("must be true or false");
  return value_->get_bool();
}

std::string JSONNode::json() const { return json::serialize(*value_); }

std::int64_t JSONNode::integer() const {
  const auto* number = value_->if_int64();
  if (number == nullptr) refuse("must be a whole number");
  return *number;
}

std::uint64_t JSONNode::number(std::uint64_t lowest, std::uint64_t highest) const {
  const auto* number = value_->if_int64();
  const auto positive = number == nullptr || *number < 0 ? UINT64_MAX : std::uint64_t(*number);
  if (positive < lowest || positive > highest) {
    refuse("must be a whole number from " + std::to_string(lowest) + " to " +
           std::to_string(highest));
  }
  return positive;
}

json::value parseJSON(std::string_view text) {
  json::stream_parser parser({}, {.max_depth = kDeepest});
  json::error_code error;
  const std::size_t read = parser.write_some(text.data(), text.size(), error);
  if (!error && text.find_first_not_of(" \t\r\n", read) != std::string_view::npos) {
    error = json::error::extra_data;
  }
  if (!error) parser.finish(error);
  if (!error) {
    if (const auto key = repeatedKey(text)) throw JSONError(*key, "stands twice");
    return parser.release();
  }

  const auto before = text.substr(0, read);
  const auto line = 1 + std::ranges::count(before, '\n');
  const auto column = before.size() - (before.rfind('\n') + 1) + 1;
  throw JSONError("line " + std::to_string(line) + ", column " + std::to_string(column),
                  error.message());
}

}  // namespace quenwick::sandbox
