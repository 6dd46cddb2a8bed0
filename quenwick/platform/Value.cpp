#include "quenwick/platform/Value.h"

#include <algorithm>
#include <utility>

namespace quenwick::platform::inline v0 {

Dictionary::Dictionary() = default;
Dictionary::Dictionary(const Dictionary&) = default;
Dictionary::Dictionary(Dictionary&&) noexcept = default;
Dictionary& Dictionary::operator=(const Dictionary&) = default;
Dictionary& Dictionary::operator=(Dictionary&&) noexcept = default;
Dictionary::~Dictionary() = default;

std::size_t Dictionary::size() const { return entries_.size(); }
bool Dictionary::empty() const { return entries_.empty(); }
Dictionary::Iterator Dictionary::begin() const { return entries_.begin(); }
Dictionary::Iterator Dictionary::end() const { return entries_.end(); }

bool operator==(const Dictionary& left, const Dictionary& right) {
  return left.entries_ == right.entries_;
}

Dictionary::Dictionary(std::initializer_list<Entry> entries) {
  entries_.reserve(entries.size());
  for (const auto& [key, value] : entries) set(key, value);
}

Dictionary Dictionary::ofUnique(std::vector<Entry> entries) {
  Dictionary dictionary;
  dictionary.entries_ = std::move(entries);
  return dictionary;
}

const Value* Dictionary::find(std::string_view key) const {
  auto found = std::ranges::find(entries_, key, &Entry::key);
  return found == entries_.end() ? nullptr : &found->value;
}

Value* Dictionary::find(std::string_view key) {
  return const_cast<Value*>(std::as_const(*this).find(key));
}

void Dictionary::set(std::string key, Value value) {
  auto found = std::ranges::find(entries_, key, &Entry::key);
  if (found == entries_.end()) {
    entries_.push_back({std::move(key), std::move(value)});
  } else {
    found->value = std::move(value);
  }
}

void Dictionary::remove(std::string_view key) {
  std::erase_if(entries_, [key](const Entry& entry) { return entry.key == key; });
}

}  // namespace quenwick::platform::inline v0
