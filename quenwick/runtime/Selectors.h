#pragma once

#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "quenwick/runtime/Operation.h"

namespace quenwick::runtime {

using Selector = Operation<platform::Value>;

/// The selectors of the client's operations, by subject.
std::span<const Selector> startSelectors();
std::span<const Selector> linkSelectors();
std::span<const Selector> eventSelectors();
std::span<const Selector> viewSelectors();

/// Any of them; null where none has the name.
const Selector* selectorNamed(std::string_view name);

/// What a host reads to find its way: {"selectors": [...], "initialisers": {...}}.
platform::Value description();

template <>
struct ResultKind<bool> {
  static constexpr std::string_view name = "flag";
  static platform::Value value(bool flag) { return flag; }
};

template <>
struct ResultKind<std::optional<std::string>> {
  static constexpr std::string_view name = "text or null";
  static platform::Value value(const std::optional<std::string>& text) { return valueOf(text); }
};

template <>
struct ResultKind<std::set<std::string>> {
  static constexpr std::string_view name = "list of text";
  static platform::Value value(const std::set<std::string>& texts);
};

template <>
struct ResultKind<std::map<std::string, std::vector<std::string>>> {
  static constexpr std::string_view name = "dictionary of list of text";
  static platform::Value value(const std::map<std::string, std::vector<std::string>>& map);
};

template <>
struct ResultKind<QWLogType> {
  static constexpr auto name = Kind<QWLogType>::name;
  static platform::Value value(QWLogType types) { return types.rawValue(); }
};

/// A number by which something can be ended.
struct Handle {
  std::int64_t number = 0;
};

template <>
struct ResultKind<Handle> {
  static constexpr std::string_view name = "handle";
  static platform::Value value(Handle handle) { return handle.number; }
};

template <>
struct ResultKind<std::optional<Handle>> {
  static constexpr std::string_view name = "handle or null";
  static platform::Value value(std::optional<Handle> handle) {
    return handle ? platform::Value(handle->number) : platform::Value();
  }
};

/// What a selector runs; see `actionOf`.
template <class Function>
constexpr Action<platform::Value> calls(Function function) {
  return actionOf<platform::Value>(function);
}

}  // namespace quenwick::runtime
