#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "quenwick/platform/Export.h"

namespace quenwick::platform::inline v0 {

class Value;

/// An ordered list of values. Written in braces behind its name: `List{1, "two"}`.
using List = std::vector<Value>;

/// A map of text to any value that keeps the order in which its keys were first set. Written in
/// braces: `{{"id", 42}, {"price", 3.5}}`; of equal keys the last value holds.
class QUENWICK_EXPORT Dictionary {
 public:
  struct Entry;
  using Iterator = std::vector<Entry>::const_iterator;

  Dictionary();
  Dictionary(std::initializer_list<Entry> entries);
  Dictionary(const Dictionary&);
  Dictionary(Dictionary&&) noexcept;
  Dictionary& operator=(const Dictionary&);
  Dictionary& operator=(Dictionary&&) noexcept;
  ~Dictionary();

  /// Takes entries whose keys are known to differ from each other.
  static Dictionary ofUnique(std::vector<Entry> entries);

  /// The value under the key, or null where there is none.
  const Value* find(std::string_view key) const;
  Value* find(std::string_view key);

  /// Sets the value under the key, in its old place where the key is there already.
  void set(std::string key, Value value);

  /// Removes the key; nothing happens where it is absent.
  void remove(std::string_view key);

  std::size_t size() const;
  bool empty() const;
  Iterator begin() const;
  Iterator end() const;

  friend bool operator==(const Dictionary&, const Dictionary&);

 private:
  std::vector<Entry> entries_;
};

/// Any value that JSON or a property list can hold. Integers keep their 64 bits and their sign.
class QUENWICK_EXPORT Value {
 public:
  using Storage = std::variant<std::nullptr_t, bool, std::int64_t, std::uint64_t, double,
                               std::string, List, Dictionary>;

  Value() : storage_(nullptr) {}
  Value(std::nullptr_t) : storage_(nullptr) {}
  Value(std::same_as<bool> auto flag) : storage_(flag) {}
  Value(std::signed_integral auto number) : storage_(static_cast<std::int64_t>(number)) {}
  template <std::unsigned_integral Number>
    requires(!std::same_as<Number, bool>)
  Value(Number number) : storage_(static_cast<std::uint64_t>(number)) {}
  Value(std::floating_point auto number) : storage_(static_cast<double>(number)) {}
  Value(std::string text) : storage_(std::move(text)) {}
  Value(std::string_view text) : storage_(std::string(text)) {}
  Value(const char* text) : storage_(std::string(text)) {}
  Value(List list) : storage_(std::move(list)) {}
  Value(Dictionary dictionary) : storage_(std::move(dictionary)) {}

  const Storage& storage() const { return storage_; }
  bool isNull() const { return std::holds_alternative<std::nullptr_t>(storage_); }

  /// The value as the kind asked for, or null where it is of another kind.
  template <class Kind>
  const Kind* as() const {
    return std::get_if<Kind>(&storage_);
  }
  template <class Kind>
  Kind* as() {
    return std::get_if<Kind>(&storage_);
  }

  friend bool operator==(const Value&, const Value&) = default;

 private:
  Storage storage_;
};

struct Dictionary::Entry {
  std::string key;
  Value value;
  friend bool operator==(const Entry&, const Entry&) = default;
};

}  // namespace quenwick::platform::inline v0
