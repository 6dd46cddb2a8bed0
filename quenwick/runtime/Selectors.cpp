#include "quenwick/runtime/Selectors.h"

#include <array>

#include "quenwick/platform/Text.h"
#include "quenwick/runtime/Records.h"

namespace quenwick::runtime {
namespace {

using platform::Dictionary;
using platform::List;
using platform::Value;

constexpr std::array kParts{startSelectors, linkSelectors, eventSelectors, viewSelectors};

Value described(std::string_view name, const ParameterKind& kind) {
  return Dictionary{{"name", name}, {"kind", kind.text}};
}

Dictionary described(std::string_view name, std::initializer_list<std::string_view> parameters,
                     const Shape& shape) {
  List arguments;
  auto kind = shape.parameters.begin();
  for (auto parameter : parameters) {
    if (!kind->isCallback) arguments.push_back(described(parameter, *kind));
    ++kind;
  }
  return {{"selector", name}, {"arguments", std::move(arguments)}};
}

template <class Out>
Dictionary described(const Operation<Out>& operation) {
  return described(operation.name, operation.parameters, *operation.action.shape);
}

Value describedSelector(const Selector& selector) {
  auto entry = described(selector);
  auto kind = selector.action.shape->parameters.begin();
  for (auto parameter : selector.parameters) {
    if (kind->isCallback) {
      entry.set("callback", Dictionary{{"name", parameter},
                                       {"arguments", kind->text},
                                       {"isRequired", kind->isRequired}});
    }
    ++kind;
  }
  auto result = selector.action.shape->result;
  entry.set("result", result.empty() ? Value() : Value(result));
  return entry;
}

template <class Record>
void describeInitialisers(Dictionary& records) {
  List entries;
  for (const auto& each : initialisers<Record>()) entries.emplace_back(described(each));
  records.set(std::string(Kind<Record>::name), std::move(entries));
}

List listOf(const auto& texts) {
  List list;
  for (const auto& text : texts) list.emplace_back(platform::madeUTF8(text));
  return list;
}

}  // namespace

const Selector* selectorNamed(std::string_view name) {
  for (auto part : kParts) {
    if (const auto* found = find(part(), name)) return found;
  }
  return nullptr;
}

Value description() {
  List all;
  for (auto part : kParts) {
    for (const auto& each : part()) all.push_back(describedSelector(each));
  }
  Dictionary records;
  describeInitialisers<ProductProperties>(records);
  describeInitialisers<ProductCategory>(records);
  describeInitialisers<ProductSearchedProperties>(records);
  describeInitialisers<OrderCompletedProperties>(records);
  describeInitialisers<OrderCompletedProduct>(records);
  return Dictionary{{"selectors", std::move(all)}, {"initialisers", std::move(records)}};
}

Value ResultKind<std::set<std::string>>::value(const std::set<std::string>& texts) {
  return listOf(texts);
}

Value ResultKind<std::map<std::string, std::vector<std::string>>>::value(
    const std::map<std::string, std::vector<std::string>>& map) {
  Dictionary entries;
  for (const auto& [key, texts] : map) entries.set(platform::madeUTF8(key), listOf(texts));
  return entries;
}

}  // namespace quenwick::runtime
