#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quenwick/API/Models/Decimal.h"
#include "quenwick/API/Models/Price.h"
#include "quenwick/client/OpeningLinks.h"
#include "quenwick/logging/QWLogType.h"
#include "quenwick/platform/URL.h"
#include "quenwick/platform/Value.h"
#include "quenwick/runtime/ArgumentError.h"

namespace quenwick::runtime {

/// A kind of argument: what it is called, and how it is read from JSON. `read` may take the value's
/// contents, and throws an `ArgumentError`.
template <class T>
struct Kind;

/// The texts one after another, while compiling.
template <const std::string_view&... texts>
struct Joined {
  static constexpr auto characters = [] {
    std::array<char, (texts.size() + ...)> all{};
    auto end = all.begin();
    ((end = std::ranges::copy(texts, end).out), ...);
    return all;
  }();
  static constexpr std::string_view text{characters.data(), characters.size()};
};

template <>
struct Kind<std::string> {
  static constexpr std::string_view name = "text";
  static std::string read(platform::Value&& value);
};

template <>
struct Kind<bool> {
  static constexpr std::string_view name = "flag";
  static bool read(const platform::Value& value);
};

template <>
struct Kind<std::int64_t> {
  static constexpr std::string_view name = "integer";
  static std::int64_t read(const platform::Value& value);
};

template <>
struct Kind<double> {
  static constexpr std::string_view name = "number";
  static double read(const platform::Value& value);
};

template <>
struct Kind<float> {
  static constexpr std::string_view name = "number";
  static float read(const platform::Value& value);
};

/// A text, to 38 digits, or a number: an integer in full, another as a double keeps it.
template <>
struct Kind<Decimal> {
  static constexpr std::string_view name = "decimal";
  static Decimal read(const platform::Value& value);
};

/// A text as it is given, or a number with two decimals.
template <>
struct Kind<Price> {
  static constexpr std::string_view name = "text or number";
  static Price read(platform::Value&& value);
};

template <>
struct Kind<platform::Dictionary> {
  static constexpr std::string_view name = "dictionary";
  static platform::Dictionary read(platform::Value&& value);
};

template <>
struct Kind<platform::URL> {
  static constexpr std::string_view name = "URL";
  static platform::URL read(platform::Value&& value);
};

template <>
struct Kind<QWLogType> {
  static constexpr std::string_view name = "log types";
  static QWLogType read(const platform::Value& value);
};

template <>
struct Kind<NSUserActivity> {
  static constexpr std::string_view name = "NSUserActivity";
  static NSUserActivity read(platform::Value&& value);
};

template <>
struct Kind<UISceneConnectionOptions> {
  static constexpr std::string_view name = "UISceneConnectionOptions";
  static UISceneConnectionOptions read(platform::Value&& value);
};

template <>
struct Kind<NSItemProvider> {
  static constexpr std::string_view name = "NSItemProvider";
  static NSItemProvider read(platform::Value&& value);
};

template <class T>
struct Kind<std::optional<T>> {
  static constexpr std::string_view after = " or null";
  static constexpr auto name = Joined<Kind<T>::name, after>::text;
  static std::optional<T> read(platform::Value&& value) {
    if (value.isNull()) return std::nullopt;
    return Kind<T>::read(std::move(value));
  }
};

/// Calls `read` with each element.
void readElements(std::string_view kind, platform::Value& value,
                  const std::function<void(platform::Value&& element)>& read);

template <class T>
struct Kind<std::vector<T>> {
  static constexpr std::string_view before = "list of ";
  static constexpr auto name = Joined<before, Kind<T>::name>::text;
  static std::vector<T> read(platform::Value&& value) {
    std::vector<T> elements;
    readElements(name, value, [&](platform::Value&& element) {
      elements.push_back(Kind<T>::read(std::move(element)));
    });
    return elements;
  }
};

template <>
struct Kind<std::map<std::string, std::vector<std::string>>> {
  static constexpr std::string_view name = "dictionary of list of text";
  static std::map<std::string, std::vector<std::string>> read(const platform::Value& value);
};

/// Reads an object's fields by their names; a field that is not asked for is refused at the end.
class Fields {
 public:
  /// `kind` is what the object is called.
  Fields(std::string_view kind, platform::Value&& value);

  /// A field that is missing is null.
  template <class T>
  T take(std::string_view name) {
    auto value = taken(name);
    return at([&] { return keyed(name); }, [&] { return Kind<T>::read(std::move(value)); });
  }

  void end() const;

 private:
  platform::Value taken(std::string_view name);

  std::string_view kind_;
  platform::Dictionary fields_;
};

}  // namespace quenwick::runtime
