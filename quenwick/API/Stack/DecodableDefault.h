#pragma once

#include <concepts>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "quenwick/API/Stack/Coding.h"
#include "quenwick/API/Stack/Hashing.h"

namespace quenwick {

/// Names a type, and the value of it that stands for a missing one.
template <class Source>
concept DecodableDefaultSource = Decodable<typename Source::Value> && requires {
  { Source::defaultValue() } -> std::same_as<typename Source::Value>;
};

/// Fields of records that have a default: a missing key, or null, gives it. A value of another
/// type still fails.
namespace DecodableDefault {

template <DecodableDefaultSource Source>
struct Wrapper {
  using Value = typename Source::Value;

  Wrapper() : wrappedValue(Source::defaultValue()) {}
  Wrapper(Value value) : wrappedValue(std::move(value)) {}

  Value wrappedValue;

  friend bool operator==(const Wrapper&, const Wrapper&) = default;
};

namespace Sources {

struct True {
  using Value = bool;
  static bool defaultValue() { return true; }
};

struct False {
  using Value = bool;
  static bool defaultValue() { return false; }
};

struct EmptyString {
  using Value = std::string;
  static std::string defaultValue() { return {}; }
};

template <class List>
struct EmptyList {
  using Value = List;
  static List defaultValue() { return {}; }
};

template <class Map>
struct EmptyMap {
  using Value = Map;
  static Map defaultValue() { return {}; }
};

template <class Number>
struct ZeroNumeric {
  using Value = Number;
  static Number defaultValue() { return 0; }
};

}  // namespace Sources

using True = Wrapper<Sources::True>;
using False = Wrapper<Sources::False>;
using EmptyString = Wrapper<Sources::EmptyString>;
template <class List>
using EmptyList = Wrapper<Sources::EmptyList<List>>;
template <class Map>
using EmptyMap = Wrapper<Sources::EmptyMap<Map>>;
template <class Number>
using ZeroNumeric = Wrapper<Sources::ZeroNumeric<Number>>;

}  // namespace DecodableDefault

/// On its own a wrapper reads its value, without a default.
template <class Source>
struct Coding<DecodableDefault::Wrapper<Source>> {
  using Wrapper = DecodableDefault::Wrapper<Source>;
  using Inner = Coding<typename Wrapper::Value>;

  static constexpr std::string_view expected = Inner::expected;
  static Wrapper decode(const platform::Value& value, const CodingPath& path) {
    return Wrapper(Inner::decode(value, path));
  }
  static platform::Value encode(const Wrapper& wrapper) {
    return Inner::encode(wrapper.wrappedValue);
  }
  static Wrapper whenMissing() { return {}; }
};

}  // namespace quenwick

template <class Source>
struct std::hash<quenwick::DecodableDefault::Wrapper<Source>> {
  using Wrapper = quenwick::DecodableDefault::Wrapper<Source>;
  std::size_t operator()(const Wrapper& wrapper) const {
    return quenwick::hashOf(wrapper.wrappedValue);
  }
};
