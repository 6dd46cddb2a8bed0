#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
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

/// A kind of argument: what it is called, and how it is read from JSON. `read` throws an
/// `ArgumentError`.
template <class T>
struct Kind;

template <>
struct Kind<std::string> {
  static std::string name() { return "text"; }
  static std::string read(platform::Value value);
};

template <>
struct Kind<bool> {
  static std::string name() { return "flag"; }
  static bool read(const platform::Value& value);
};

template <>
struct Kind<std::int64_t> {
  static std::string name() { return "integer"; }
  static std::int64_t read(const platform::Value& value);
};

template <>
struct Kind<double> {
  static std::string name() { return "number"; }
  static double read(const platform::Value& value);
};

template <>
struct Kind<float> {
  static std::string name() { return "number"; }
  static float read(const platform::Value& value);
};

/// A text, or a number as it is written.
template <>
struct Kind<Decimal> {
  static std::string name() { return "decimal"; }
  static Decimal read(const platform::Value& value);
};

/// A text as it is given, or a number with two decimals.
template <>
struct Kind<Price> {
  static std::string name() { return "text or number"; }
  static Price read(platform::Value value);
};

template <>
struct Kind<platform::Dictionary> {
  static std::string name() { return "dictionary"; }
  static platform::Dictionary read(platform::Value value);
};

template <>
struct Kind<platform::URL> {
  static std::string name() { return "URL"; }
  static platform::URL read(platform::Value value);
};

template <>
struct Kind<QWLogType> {
  static std::string name() { return "log types"; }
  static QWLogType read(const platform::Value& value);
};

template <>
struct Kind<NSUserActivity> {
  static std::string name() { return "NSUserActivity"; }
  static NSUserActivity read(platform::Value value);
};

template <>
struct Kind<UISceneConnectionOptions> {
  static std::string name() { return "UISceneConnectionOptions"; }
  static UISceneConnectionOptions read(platform::Value value);
};

template <>
struct Kind<NSItemProvider> {
  static std::string name() { return "NSItemProvider"; }
  static NSItemProvider read(platform::Value value);
};

template <class T>
struct Kind<std::optional<T>> {
  static std::string name() { return Kind<T>::name() + " or null"; }
  // NOLINTNEXTLINE(performance-unnecessary-value-param): moved where the kind takes a value.
  static std::optional<T> read(platform::Value value) {
    if (value.isNull()) return std::nullopt;
    return Kind<T>::read(std::move(value));
  }
};

template <class T>
struct Kind<std::vector<T>> {
  static std::string name() { return "list of " + Kind<T>::name(); }
  static std::vector<T> read(platform::Value value) {
    auto* list = value.as<platform::List>();
    if (!list) throw ArgumentError::mismatch(name(), value);
    std::vector<T> elements;
    elements.reserve(list->size());
    for (auto& each : *list) {
      elements.push_back(at([&] { return "element " + std::to_string(elements.size() + 1); },
                            [&] { return Kind<T>::read(std::move(each)); }));
    }
    return elements;
  }
};

template <class T>
struct Kind<std::map<std::string, T>> {
  static std::string name() { return "dictionary of " + Kind<T>::name(); }
  static std::map<std::string, T> read(const platform::Value& value) {
    const auto* dictionary = value.as<platform::Dictionary>();
    if (!dictionary) throw ArgumentError::mismatch(name(), value);
    std::map<std::string, T> entries;
    for (const auto& [key, entry] : *dictionary) {
      entries.emplace(key, at([&] { return keyed(key); }, [&] { return Kind<T>::read(entry); }));
    }
    return entries;
  }
};

/// Reads an object's fields by their names; a field that is not asked for is refused at the end.
class Fields {
 public:
  /// `kind` is what the object is called.
  Fields(std::string kind, platform::Value value);

  /// A field that is missing is null.
  template <class T>
  T take(std::string_view name) {
    auto* found = fields_.find(name);
    auto value = found ? std::move(*found) : platform::Value();
    fields_.remove(name);
    return at([&] { return keyed(name); }, [&] { return Kind<T>::read(std::move(value)); });
  }

  void end() const;

 private:
  std::string kind_;
  platform::Dictionary fields_;
};

}  // namespace quenwick::runtime
