#include "quenwick/runtime/Selectors.h"

#include <algorithm>
#include <iterator>

#include "quenwick/platform/Text.h"
#include "quenwick/runtime/Records.h"

namespace quenwick::runtime {
namespace {

using platform::Dictionary;
using platform::List;
using platform::Value;

Value described(const Parameter& parameter) {
  return Dictionary{{"name", parameter.name}, {"kind", parameter.kind}};
}

template <class Out>
Dictionary described(const Operation<Out>& operation) {
  Dictionary entry{{"selector", operation.name}};
  List arguments;
  for (const auto& parameter : operation.parameters) {
    if (!parameter.isCallback) arguments.push_back(described(parameter));
  }
  entry.set("arguments", std::move(arguments));
  return entry;
}

Value describedSelector(const Selector& selector) {
  auto entry = described(selector);
  for (const auto& parameter : selector.parameters) {
    if (!parameter.isCallback) continue;
    entry.set("callback", Dictionary{{"name", parameter.name},
                                     {"arguments", parameter.kind},
                                     {"isRequired", parameter.isRequired}});
  }
  entry.set("result", selector.result.empty() ? Value() : Value(selector.result));
  return entry;
}

template <class Record>
void describeInitialisers(Dictionary& records) {
  List entries;
  for (const auto& each : initialisers<Record>()) entries.emplace_back(described(each));
  records.set(Kind<Record>::name(), std::move(entries));
}

List listOf(const auto& texts) {
  List list;
  for (const auto& text : texts) list.emplace_back(platform::madeUTF8(text));
  return list;
}

}  // namespace

const std::vector<Selector>& selectors() {
  static const auto& table = *[] {
    auto* all = new std::vector<Selector>;
    for (auto part : {startSelectors, linkSelectors, eventSelectors, viewSelectors}) {
      std::ranges::move(part(), std::back_inserter(*all));
    }
    return all;
  }();
  return table;
}

Value description() {
  List all;
  for (const auto& each : selectors()) all.push_back(describedSelector(each));
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
