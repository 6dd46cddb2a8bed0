#pragma once

#include <string>
#include <utility>
#include <vector>

#include "quenwick/API/Models/OrderCompletedProperties.h"
#include "quenwick/API/Models/ProductProperties.h"
#include "quenwick/API/Models/ProductSearchedProperties.h"
#include "quenwick/runtime/Operation.h"

namespace quenwick::runtime {

/// The initialisers of a property record, by which a host may give one in place of a dictionary:
/// {"selector": "initWithId:title:url:", "arguments": ["7", "Boots", null]}.
template <class Record>
const std::vector<Operation<Record>>& initialisers();
template <>
const std::vector<Operation<ProductProperties>>& initialisers();
template <>
const std::vector<Operation<ProductCategory>>& initialisers();
template <>
const std::vector<Operation<ProductSearchedProperties>>& initialisers();
template <>
const std::vector<Operation<OrderCompletedProperties>>& initialisers();
template <>
const std::vector<Operation<OrderCompletedProduct>>& initialisers();

/// An object that names an initialiser: its keys are "selector" and "arguments", and no others.
struct InitialiserCall {
  std::string selector;
  platform::List arguments;

  /// None where the dictionary is something else: a record's fields.
  static std::optional<InitialiserCall> from(platform::Dictionary& dictionary);
};

template <class Record>
struct RecordKind {
  static Record read(platform::Value value) {
    auto* dictionary = value.as<platform::Dictionary>();
    if (!dictionary) throw ArgumentError::mismatch(Kind<Record>::name(), value);
    auto call = InitialiserCall::from(*dictionary);
    if (!call) return fromDictionary(std::move(*dictionary));
    const auto* initialiser = find(initialisers<Record>(), call->selector);
    if (initialiser) return initialiser->perform(std::move(call->arguments));
    throw ArgumentError(Kind<Record>::name() + " has no initialiser " +
                        platform::shown(call->selector));
  }

  static Record fromDictionary(platform::Dictionary dictionary) {
    auto record = Record::from(std::move(dictionary));
    if (!record) throw ArgumentError("makes no " + Kind<Record>::name() + "; the log says why");
    return *std::move(record);
  }
};

template <>
struct Kind<ProductProperties> : RecordKind<ProductProperties> {
  static std::string name() { return "ProductProperties"; }
};
template <>
struct Kind<ProductCategory> : RecordKind<ProductCategory> {
  static std::string name() { return "ProductCategory"; }
};
template <>
struct Kind<ProductSearchedProperties> : RecordKind<ProductSearchedProperties> {
  static std::string name() { return "ProductSearchedProperties"; }
};
template <>
struct Kind<OrderCompletedProperties> : RecordKind<OrderCompletedProperties> {
  static std::string name() { return "OrderCompletedProperties"; }
};
template <>
struct Kind<OrderCompletedProduct> : RecordKind<OrderCompletedProduct> {
  static std::string name() { return "OrderCompletedProduct"; }
};

}  // namespace quenwick::runtime
