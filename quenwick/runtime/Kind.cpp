#include "quenwick/runtime/Kind.h"

#include <cmath>
#include <limits>

#include "quenwick/platform/Text.h"

namespace quenwick::runtime {
namespace {

using platform::Dictionary;
using platform::Value;
using Paths = std::map<std::string, std::vector<std::string>>;

template <class Held>
Held taken(Value& value, std::string_view kind) {
  auto* held = value.as<Held>();
  if (!held) throw ArgumentError::mismatch(kind, value);
  return std::move(*held);
}

/// The same, copied.
template <class Held>
Held plain(const Value& value, std::string_view kind) {
  const auto* held = value.as<Held>();
  if (!held) throw ArgumentError::mismatch(kind, value);
  return *held;
}

}  // namespace

std::string Kind<std::string>::read(Value&& value) { return taken<std::string>(value, name); }

bool Kind<bool>::read(const Value& value) { return plain<bool>(value, name); }

std::int64_t Kind<std::int64_t>::read(const Value& value) {
  if (value.as<std::uint64_t>()) throw ArgumentError("must fit a signed integer of 64 bits");
  return plain<std::int64_t>(value, name);
}

double Kind<double>::read(const Value& value) {
  if (const auto* integer = value.as<std::int64_t>()) return static_cast<double>(*integer);
  if (const auto* integer = value.as<std::uint64_t>()) return static_cast<double>(*integer);
  return plain<double>(value, name);
}

float Kind<float>::read(const Value& value) {
  auto number = Kind<double>::read(value);
  if (std::abs(number) > static_cast<double>(std::numeric_limits<float>::max())) {
    throw ArgumentError("is too large");
  }
  return static_cast<float>(number);
}

Decimal Kind<Decimal>::read(const Value& value) {
  if (const auto* integer = value.as<std::int64_t>()) return *integer;
  if (const auto* integer = value.as<std::uint64_t>()) return *integer;
  const auto* number = value.as<double>();
  auto text =
      number ? platform::shortestDecimal(*number) : plain<std::string>(value, "text or number");
  auto decimal = Decimal::parse(text);
  if (!decimal) throw ArgumentError("is no decimal number");
  return *decimal;
}

Price Kind<Price>::read(Value&& value) {
  if (const auto* integer = value.as<std::int64_t>()) return *integer;
  if (const auto* integer = value.as<std::uint64_t>()) return *integer;
  if (const auto* number = value.as<double>()) return *number;
  return taken<std::string>(value, name);
}

Dictionary Kind<Dictionary>::read(Value&& value) { return taken<Dictionary>(value, name); }

platform::URL Kind<platform::URL>::read(Value&& value) {
  auto url = platform::URL::parse(taken<std::string>(value, "text"));
  if (!url) throw ArgumentError("is no URL");
  return *std::move(url);
}

QWLogType Kind<QWLogType>::read(const Value& value) {
  auto raw = Kind<std::int64_t>::read(value);
  if (raw < QWLogType::none.rawValue() || raw > QWLogType::all.rawValue()) {
    throw ArgumentError("must be from 0 to 3");
  }
  return QWLogType(static_cast<int>(raw));
}

NSUserActivity Kind<NSUserActivity>::read(Value&& value) {
  Fields fields(name, std::move(value));
  NSUserActivity activity{.activityType = fields.take<std::string>("activityType"),
                          .webpageURL = fields.take<std::optional<std::string>>("webpageURL")};
  fields.end();
  return activity;
}

UISceneConnectionOptions Kind<UISceneConnectionOptions>::read(Value&& value) {
  Fields fields(name, std::move(value));
  UISceneConnectionOptions options{.userActivities =
                                       fields.take<std::vector<NSUserActivity>>("userActivities")};
  fields.end();
  return options;
}

NSItemProvider Kind<NSItemProvider>::read(Value&& value) {
  Fields fields(name, std::move(value));
  NSItemProvider provider{.url = fields.take<std::optional<std::string>>("url"),
                          .text = fields.take<std::optional<std::string>>("text")};
  fields.end();
  return provider;
}

void readElements(std::string_view kind, Value& value,
                  const std::function<void(Value&& element)>& read) {
  auto* list = value.as<platform::List>();
  if (!list) throw ArgumentError::mismatch(kind, value);
  std::size_t count = 0;
  for (auto& each : *list) {
    ++count;
    at([&] { return "element " + std::to_string(count); }, [&] { read(std::move(each)); });
  }
}

Paths Kind<Paths>::read(const Value& value) {
  const auto* dictionary = value.as<Dictionary>();
  if (!dictionary) throw ArgumentError::mismatch(name, value);
  Paths entries;
  for (const auto& each : *dictionary) {
    auto texts = each.value;
    entries.emplace(each.key, at([&] { return keyed(each.key); },
                                 [&] { return Kind<Paths::mapped_type>::read(std::move(texts)); }));
  }
  return entries;
}

Fields::Fields(std::string_view kind, Value&& value)
    : kind_(kind), fields_(Kind<Dictionary>::read(std::move(value))) {}

Value Fields::taken(std::string_view name) {
  auto* found = fields_.find(name);
  auto value = found ? std::move(*found) : Value();
  fields_.remove(name);
  return value;
}

void Fields::end() const {
  if (fields_.empty()) return;
  throw ArgumentError(std::string(kind_) + " has no " + keyed(fields_.begin()->key));
}

}  // namespace quenwick::runtime
