#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
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
  /// A key and its value.
  struct Entry;
  /// Runs over the entries; setting or removing a key ends its validity.
  using Iterator = std::vector<Entry>::const_iterator;

  /// Holds nothing.
  Dictionary();
  /// Holds the entries, in their order; of equal keys the last value, in the first one's place.
  Dictionary(std::initializer_list<Entry> entries);
  /// A copy of its own, all the way down.
  Dictionary(const Dictionary&);
  /// Takes the entries; the other is empty afterwards.
  Dictionary(Dictionary&&) noexcept;
  /// A copy in place of what was held.
  Dictionary& operator=(const Dictionary&);
  /// Takes the entries in place of what was held.
  Dictionary& operator=(Dictionary&&) noexcept;
  ~Dictionary();

  /// Takes entries whose keys are known to differ from each other.
  static Dictionary ofUnique(std::vector<Entry> entries);

  /// The value under the key, or null where there is none.
  const Value* find(std::string_view key) const;
  /// The same, to be changed in its place.
  Value* find(std::string_view key);

  /// Sets the value under the key, in its old place where the key is there already.
  void set(std::string key, Value value);

  /// Removes the key; nothing happens where it is absent.
  void remove(std::string_view key);

  /// How many keys there are.
  std::size_t size() const;
  /// Whether there is none.
  bool empty() const;
  /// The first entry, in the order in which keys were first set.
  Iterator begin() const;
  /// Past the last entry.
  Iterator end() const;

  /// Equal where keys, values and order are.
  friend bool operator==(const Dictionary&, const Dictionary&);

 private:
  friend class Value;
  std::vector<Entry> entries_;
};

/// Any value that JSON or a property list can hold. Integers keep their 64 bits and their sign.
/// However deep it nests, to copy, compare and destroy it costs no thread its stack.
class QUENWICK_EXPORT Value {
 public:
  /// The kinds of values there are.
  using Storage = std::variant<std::nullptr_t, bool, std::int64_t, std::uint64_t, double,
                               std::string, List, Dictionary>;

  /// Null.
  Value() : storage_(nullptr) {}
  /// Null.
  Value(std::nullptr_t) : storage_(nullptr) {}
  /// A flag, made of nothing but a `bool`.
  Value(std::same_as<bool> auto flag) : storage_(flag) {}
  /// A whole number with a sign.
  Value(std::signed_integral auto number) : storage_(static_cast<std::int64_t>(number)) {}
  /// A whole number without one.
  template <std::unsigned_integral Number>
    requires(!std::same_as<Number, bool>)
  Value(Number number) : storage_(static_cast<std::uint64_t>(number)) {}
  /// A number with a fraction, held as a `double`.
  Value(std::floating_point auto number) : storage_(static_cast<double>(number)) {}
  /// Text in UTF-8. Nothing is checked here: what uses the value refuses other text.
  Value(std::string text) : storage_(std::move(text)) {}
  /// The same, copied.
  Value(std::string_view text) : storage_(std::string(text)) {}
  /// The same, copied; a null pointer gives null.
  Value(const char* text) : Value() {
    if (text) storage_ = std::string(text);
  }
  /// A list.
  Value(List list) : storage_(std::move(list)) {}
  /// A dictionary.
  Value(Dictionary dictionary) : storage_(std::move(dictionary)) {}

  /// A value like the other.
  Value(const Value& other) : Value() {
    other.isNested() ? copyNested(other) : void(storage_ = other.storage_);
  }
  Value(Value&&) noexcept = default;
  /// Becomes like the other.
  Value& operator=(const Value& other) { return *this = Value(other); }
  Value& operator=(Value&&) noexcept = default;
  ~Value() {
    if (isNested()) dismantle();
  }

  /// The value as a variant, for `std::visit`.
  const Storage& storage() const { return storage_; }
  /// Whether it is null.
  bool isNull() const { return std::holds_alternative<std::nullptr_t>(storage_); }

  /// The value as the kind asked for, or null where it is of another kind.
  template <class Kind>
  const Kind* as() const {
    return std::get_if<Kind>(&storage_);
  }
  /// The same, to be changed in its place.
  template <class Kind>
  Kind* as() {
    return std::get_if<Kind>(&storage_);
  }

  /// Whether both are of one kind and hold the same.
  bool operator==(const Value& other) const;

 private:
  /// Whether there are values within.
  bool isNested() const {
    if (const auto* list = as<List>()) return !list->empty();
    const auto* dictionary = as<Dictionary>();
    return dictionary && !dictionary->empty();
  }
  void copyNested(const Value& other);
  void dismantle() noexcept;

  Storage storage_;
};

/// A key and its value.
struct Dictionary::Entry {
  /// Unique within its dictionary.
  std::string key;
  /// Null too is a value.
  Value value;
  friend bool operator==(const Entry&, const Entry&) = default;
};

}  // namespace quenwick::platform::inline v0
