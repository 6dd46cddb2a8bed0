#include "quenwick/platform/Value.h"

#include <algorithm>
#include <utility>

namespace quenwick::platform::inline v0 {
namespace {

/// A dictionary that grows has room for as many: most have a few fields, and none is moved twice.
constexpr std::size_t kLeastGrown = 8;

}  // namespace

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
    if (entries_.size() == entries_.capacity()) {
      entries_.reserve(std::max(kLeastGrown, 2 * entries_.size()));
    }
    entries_.push_back({std::move(key), std::move(value)});
  } else {
    found->value = std::move(value);
  }
}

void Dictionary::remove(std::string_view key) {
  std::erase_if(entries_, [key](const Entry& entry) { return entry.key == key; });
}

// Each level is copied, compared or taken apart in its turn, and puts those within it in line.

void Value::copyNested(const Value& other) {
  std::vector<std::pair<const Value*, Value*>> rest{{&other, this}};
  auto copy = [&rest](const Value& from, Value& to) {
    from.isNested() ? void(rest.emplace_back(&from, &to)) : void(to.storage_ = from.storage_);
  };
  while (!rest.empty()) {
    auto [from, to] = rest.back();
    rest.pop_back();
    if (const auto* list = from->as<List>()) {
      auto& copies = to->storage_.emplace<List>(list->size());
      for (std::size_t i = 0; i < list->size(); ++i) copy((*list)[i], copies[i]);
      continue;
    }
    const auto& dictionary = *from->as<Dictionary>();
    auto& copies = to->storage_.emplace<Dictionary>().entries_;
    copies.reserve(dictionary.size());
    for (const auto& [key, value] : dictionary)
      copy(value, copies.emplace_back(Dictionary::Entry{key, {}}).value);
  }
}

bool Value::operator==(const Value& other) const {
  std::vector<std::pair<const Value*, const Value*>> rest;
  auto mayEqual = [&rest](const Value& one, const Value& two) {
    if (!one.isNested() || !two.isNested()) return one.storage_ == two.storage_;
    rest.emplace_back(&one, &two);
    return true;
  };
  auto mayEqualInKey = [&](const Dictionary::Entry& one, const Dictionary::Entry& two) {
    return one.key == two.key && mayEqual(one.value, two.value);
  };
  bool isSame = mayEqual(*this, other);
  while (isSame && !rest.empty()) {
    auto [one, two] = rest.back();
    rest.pop_back();
    if (one->storage_.index() != two->storage_.index()) return false;
    isSame = one->as<List>() ? std::ranges::equal(*one->as<List>(), *two->as<List>(), mayEqual)
                             : std::ranges::equal(*one->as<Dictionary>(), *two->as<Dictionary>(),
                                                  mayEqualInKey);
  }
  return isSame;
}

void Value::dismantle() noexcept {
  std::vector<Value> rest;
  auto take = [&rest](Value& value) {
    if (value.isNested()) rest.push_back(std::move(value));
  };
  auto takeWithin = [&take](Value& holder) {
    if (auto* list = holder.as<List>()) return void(std::ranges::for_each(*list, take));
    std::ranges::for_each(holder.as<Dictionary>()->entries_, take, &Dictionary::Entry::value);
  };
  takeWithin(*this);
  while (!rest.empty()) {
    auto holder = std::move(rest.back());
    rest.pop_back();
    takeWithin(holder);
  }
}

}  // namespace quenwick::platform::inline v0
