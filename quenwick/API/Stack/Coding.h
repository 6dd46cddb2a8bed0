#pragma once

#include <concepts>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "quenwick/API/Stack/CodingPath.h"
#include "quenwick/API/Stack/Number.h"
#include "quenwick/platform/Value.h"

namespace quenwick {

/// How a type is read from JSON and written to it. Specialised for the kinds of JSON below and
/// for records, which declare their fields once:
///
///     struct Offer {
///       std::string name;
///       std::optional<int> stock;
///       static constexpr auto fields() {
///         return std::tuple{Field{"name", &Offer::name}, Field{"in_stock", &Offer::stock}};
///       }
///     };
///
/// Keys that no field has are left alone. `decode` throws `DecodingError`.
template <class T>
struct Coding;

template <class T>
concept Decodable = requires(const platform::Value& value, const CodingPath& path) {
  { Coding<T>::decode(value, path) } -> std::same_as<T>;
};

template <class T>
concept Encodable = requires(const T& value) {
  { Coding<T>::encode(value) } -> std::same_as<platform::Value>;
};

/// A member of a record and its JSON key.
template <class Record, class Member>
struct Field {
  std::string_view key;
  Member Record::* member;
};

template <class T>
concept Record = requires { T::fields(); };

template <>
struct Coding<std::string> {
  static constexpr std::string_view expected = "a text";
  static std::string decode(const platform::Value& value, const CodingPath& path) {
    if (const auto* text = value.as<std::string>()) return *text;
    path.failMismatch(expected, value);
  }
  static platform::Value encode(const std::string& text) { return text; }
};

template <>
struct Coding<bool> {
  static constexpr std::string_view expected = "a boolean";
  static bool decode(const platform::Value& value, const CodingPath& path) {
    if (const auto* flag = value.as<bool>()) return *flag;
    path.failMismatch(expected, value);
  }
  static platform::Value encode(bool flag) { return flag; }
};

/// A number without a fraction, 1.0 too, that the type can hold.
template <std::integral Number>
struct Coding<Number> {
  static constexpr std::string_view expected = "a whole number";
  static Number decode(const platform::Value& value, const CodingPath& path) {
    if (!isNumber(value)) path.failMismatch(expected, value);
    auto number = wholeNumber<Number>(value);
    if (!number) path.failInexact(expected);
    return *number;
  }
  static platform::Value encode(Number number) { return number; }
};

/// Any number within the type's range, to the type's precision.
template <std::floating_point Number>
struct Coding<Number> {
  static constexpr std::string_view expected = "a number";
  static Number decode(const platform::Value& value, const CodingPath& path) {
    if (!isNumber(value)) path.failMismatch(expected, value);
    auto number = realNumber<Number>(value);
    if (!number) path.failInexact(expected);
    return *number;
  }
  static platform::Value encode(Number number) { return number; }
};

/// Any JSON at all, as it stands.
template <>
struct Coding<platform::Value> {
  static constexpr std::string_view expected = "a value";
  static platform::Value decode(const platform::Value& value, const CodingPath&) { return value; }
  static platform::Value encode(const platform::Value& value) { return value; }
};

template <>
struct Coding<platform::Dictionary> {
  static constexpr std::string_view expected = "an object";
  static platform::Dictionary decode(const platform::Value& value, const CodingPath& path) {
    if (const auto* object = value.as<platform::Dictionary>()) return *object;
    path.failMismatch(expected, value);
  }
  static platform::Value encode(const platform::Dictionary& object) { return object; }
};

template <class T>
struct Coding<std::vector<T>> {
  static constexpr std::string_view expected = "a list";
  static std::vector<T> decode(const platform::Value& value, const CodingPath& path) {
    const auto* elements = value.as<platform::List>();
    if (!elements) path.failMismatch(expected, value);
    std::vector<T> list;
    list.reserve(elements->size());
    for (const auto& element : *elements) {
      list.push_back(Coding<T>::decode(element, CodingPath(path, list.size())));
    }
    return list;
  }
  static platform::Value encode(const std::vector<T>& list) {
    platform::List elements;
    elements.reserve(list.size());
    for (const auto& element : list) elements.push_back(Coding<T>::encode(element));
    return elements;
  }
};

template <class T>
struct Coding<std::map<std::string, T>> {
  static constexpr std::string_view expected = "an object";
  static std::map<std::string, T> decode(const platform::Value& value, const CodingPath& path) {
    const auto* object = value.as<platform::Dictionary>();
    if (!object) path.failMismatch(expected, value);
    std::map<std::string, T> map;
    for (const auto& [key, element] : *object) {
      map.emplace(key, Coding<T>::decode(element, CodingPath(path, key)));
    }
    return map;
  }
  static platform::Value encode(const std::map<std::string, T>& map) {
    std::vector<platform::Dictionary::Entry> entries;
    for (const auto& [key, element] : map) entries.push_back({key, Coding<T>::encode(element)});
    return platform::Dictionary::ofUnique(std::move(entries));
  }
};

/// Null stands for none. As a field it may be missing, and none is not written.
template <class T>
struct Coding<std::optional<T>> {
  static constexpr std::string_view expected = Coding<T>::expected;
  static std::optional<T> decode(const platform::Value& value, const CodingPath& path) {
    if (value.isNull()) return std::nullopt;
    return Coding<T>::decode(value, path);
  }
  static platform::Value encode(const std::optional<T>& value) {
    return value ? Coding<T>::encode(*value) : platform::Value();
  }
  static std::optional<T> whenMissing() { return std::nullopt; }
  static bool isLeftOut(const std::optional<T>& value) { return !value; }
};

template <Record T>
struct Coding<T> {
  static constexpr std::string_view expected = "an object";

  static T decode(const platform::Value& value, const CodingPath& path) {
    const auto* object = value.as<platform::Dictionary>();
    if (!object) path.failMismatch(expected, value);
    T record{};
    std::apply([&](const auto&... field) { (decodeField(*object, path, field, record), ...); },
               T::fields());
    return record;
  }

  static platform::Value encode(const T& record) {
    platform::Dictionary object;
    std::apply([&](const auto&... field) { (encodeField(record, field, object), ...); },
               T::fields());
    return object;
  }

 private:
  /// A field whose type says what stands for a missing key reads null as missing, too.
  template <class Member>
  static void decodeField(const platform::Dictionary& object, const CodingPath& path,
                          const Field<T, Member>& field, T& record) {
    const auto* value = object.find(field.key);
    CodingPath place(path, field.key);
    if constexpr (requires { Coding<Member>::whenMissing(); }) {
      record.*field.member = value && !value->isNull() ? Coding<Member>::decode(*value, place)
                                                       : Coding<Member>::whenMissing();
    } else {
      if (!value) place.failMissing(Coding<Member>::expected);
      record.*field.member = Coding<Member>::decode(*value, place);
    }
  }

  template <class Member>
  static void encodeField(const T& record, const Field<T, Member>& field,
                          platform::Dictionary& object) {
    const auto& member = record.*field.member;
    if constexpr (requires { Coding<Member>::isLeftOut(member); }) {
      if (Coding<Member>::isLeftOut(member)) return;
    }
    object.set(std::string(field.key), Coding<Member>::encode(member));
  }
};

}  // namespace quenwick
