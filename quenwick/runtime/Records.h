#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "quenwick/API/Models/OrderCompletedProperties.h"
#include "quenwick/API/Models/ProductProperties.h"
#include "quenwick/API/Models/ProductSearchedProperties.h"
#include "quenwick/runtime/Operation.h"

namespace quenwick::runtime {

/// The initialisers of a property record, by which a host may give one in place of a dictionary:
/// {"selector": "initWithId:title:url:", "arguments": ["7", "Boots", null]}.
template <class Record>
std::span<const Operation<Record>> initialisers();
template <>
std::span<const Operation<ProductProperties>> initialisers();
template <>
std::span<const Operation<ProductCategory>> initialisers();
template <>
std::span<const Operation<ProductSearchedProperties>> initialisers();
template <>
std::span<const Operation<OrderCompletedProperties>> initialisers();
template <>
std::span<const Operation<OrderCompletedProduct>> initialisers();

/// An object that names an initialiser: its keys are "selector" and "arguments", and no others.
struct InitialiserCall {
  std::string selector;
  platform::List arguments;

  /// None where the dictionary is something else: a record's fields.
  static std::optional<InitialiserCall> from(platform::Dictionary& dictionary);

  /// The fault where the record has no such initialiser.
  ArgumentError unknown(std::string_view record) const;
};

/// The fault where the record cannot be made of a dictionary.
ArgumentError refused(std::string_view record);

template <class Record>
struct RecordKind {
  static Record read(platform::Value&& value) {
    auto* dictionary = value.as<platform::Dictionary>();
    if (!dictionary) throw ArgumentError::mismatch(Kind<Record>::name, value);
    auto call = InitialiserCall::from(*dictionary);
    if (!call) return fromDictionary(std::move(*dictionary));
    const auto* initialiser = find(initialisers<Record>(), call->selector);
    if (initialiser) return initialiser->perform(std::move(call->arguments));
    throw call->unknown(Kind<Record>::name);
  }

  static Record fromDictionary(platform::Dictionary dictionary) {
    auto record = Record::from(std::move(dictionary));
    if (!record) throw refused(Kind<Record>::name);
    return *std::move(record);
  }
};

template <>
struct Kind<ProductProperties> : RecordKind<ProductProperties> {
  static constexpr std::string_view name = "ProductProperties";
};
template <>
struct Kind<ProductCategory> : RecordKind<ProductCategory> {
  static constexpr std::string_view name = "ProductCategory";
};
template <>
struct Kind<ProductSearchedProperties> : RecordKind<ProductSearchedProperties> {
  static constexpr std::string_view name = "ProductSearchedProperties";
};
template <>
struct Kind<OrderCompletedProperties> : RecordKind<OrderCompletedProperties> {
  static constexpr std::string_view name = "OrderCompletedProperties";
};
template <>
struct Kind<OrderCompletedProduct> : RecordKind<OrderCompletedProduct> {
  static constexpr std::string_view name = "OrderCompletedProduct";
};

}  // namespace quenwick::runtime
