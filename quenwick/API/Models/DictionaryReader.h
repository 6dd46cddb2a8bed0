#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quenwick/API/Models/Price.h"
#include "quenwick/API/Models/RecordCoding.h"
#include "quenwick/platform/URL.h"
#include "quenwick/platform/Value.h"

namespace quenwick {

/// Takes the fields of a record out of a host's dictionary, by moving them. A field that is missing
/// or of another kind is none.
class DictionaryReader {
 public:
  /// The record that the dictionary describes; none, with an error line, where it is refused.
  template <class Record>
  static std::optional<Record> record(platform::Dictionary dictionary) {
    DictionaryReader reader(std::move(dictionary));
    auto record = read<Record>(reader);
    if (reader.fault_) refuseEvent(*reader.fault_);
    return reader.fault_ ? std::nullopt : std::move(record);
  }

  std::optional<std::string> text(std::string_view key);
  /// A text, or the digits of an integer.
  std::optional<std::string> identifier(std::string_view key);
  /// The same; where it is none an error line says so.
  std::optional<std::string> requiredIdentifier(std::string_view key);
  std::optional<Price> price(std::string_view key);
  /// A text that is no URL is none, one that is not UTF-8 refuses the whole record.
  std::optional<platform::URL> url(std::string_view key);
  std::optional<std::int64_t> integer(std::string_view key);
  std::optional<platform::Dictionary> map(std::string_view key);

  /// The records that a list of dictionaries describes. An entry that yields none is left out;
  /// one that is no dictionary is taken for an empty one.
  template <class Record>
  std::optional<std::vector<Record>> records(std::string_view key) {
    auto* list = find<platform::List>(key);
    if (!list) return std::nullopt;
    std::vector<Record> records;
    records.reserve(list->size());
    for (auto& value : *list) {
      auto* entry = value.as<platform::Dictionary>();
      DictionaryReader reader(entry ? std::move(*entry) : platform::Dictionary());
      if (auto record = read<Record>(reader)) records.push_back(*std::move(record));
      if (reader.fault_) fault_ = std::move(reader.fault_);
    }
    return records;
  }

 private:
  explicit DictionaryReader(platform::Dictionary dictionary) : dictionary_(std::move(dictionary)) {}

  template <class Kind>
  Kind* find(std::string_view key) {
    auto* value = dictionary_.find(key);
    return value ? value->as<Kind>() : nullptr;
  }

  platform::Dictionary dictionary_;
  std::optional<std::string> fault_;
};

}  // namespace quenwick
