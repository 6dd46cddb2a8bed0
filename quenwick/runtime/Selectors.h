#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "quenwick/runtime/Operation.h"

namespace quenwick::runtime {

using Selector = Operation<platform::Value>;

/// The selectors of the client's operations, by subject.
std::vector<Selector> startSelectors();
std::vector<Selector> linkSelectors();
std::vector<Selector> eventSelectors();
std::vector<Selector> viewSelectors();

/// All of them. Made by the first call, never destroyed.
const std::vector<Selector>& selectors();

/// What a host reads to find its way: {"selectors": [...], "initialisers": {...}}.
platform::Value description();

template <>
struct ResultKind<bool> {
  static std::string name() { return "flag"; }
  static platform::Value value(bool flag) { return flag; }
};

template <>
struct ResultKind<std::optional<std::string>> {
  static std::string name() { return "text or null"; }
  static platform::Value value(const std::optional<std::string>& text) { return valueOf(text); }
};

template <>
struct ResultKind<std::set<std::string>> {
  static std::string name() { return "list of text"; }
  static platform::Value value(const std::set<std::string>& texts);
};

template <>
struct ResultKind<std::map<std::string, std::vector<std::string>>> {
  static std::string name() { return "dictionary of list of text"; }
  static platform::Value value(const std::map<std::string, std::vector<std::string>>& map);
};

template <>
struct ResultKind<QWLogType> {
  static std::string name() { return Kind<QWLogType>::name(); }
  static platform::Value value(QWLogType types) { return types.rawValue(); }
};

/// A number by which something can be ended.
struct Handle {
  std::int64_t number = 0;
};

template <>
struct ResultKind<Handle> {
  static std::string name() { return "handle"; }
  static platform::Value value(Handle handle) { return handle.number; }
};

template <>
struct ResultKind<std::optional<Handle>> {
  static std::string name() { return "handle or null"; }
  static platform::Value value(std::optional<Handle> handle) {
    return handle ? platform::Value(handle->number) : platform::Value();
  }
};

/// The selector under that name; see `operation`.
template <class Function, class... Names>
Selector selector(const std::string& name, Function function, const Names&... names) {
  return operation<platform::Value>(name, function, names...);
}

}  // namespace quenwick::runtime
