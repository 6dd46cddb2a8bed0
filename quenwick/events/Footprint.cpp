#include "quenwick/events/Footprint.h"

#include <optional>
#include <string>

namespace quenwick {
namespace {

using platform::Dictionary;
using platform::List;
using platform::Value;

constexpr std::size_t kLookedThrough = 4UL << 20;
constexpr std::size_t kLookedInto = 512;
/// A field of a record takes an entry of its payload, its key, and its own place.
constexpr std::size_t kField = 2 * sizeof(Dictionary::Entry);

/// Adds up until there is enough, and no deeper than JSON goes.
class Sum {
 public:
  std::size_t bytes() const { return bytes_; }

  // What fits into the text's own place takes nothing beside it; the rest has the allocator's
  // share, too.
  void add(const std::string& text) {
    if (text.capacity() >= sizeof(std::string) / 2) bytes_ += text.capacity() + 16;
  }

  void add(const Dictionary& dictionary) {
    bytes_ += dictionary.size() * sizeof(Dictionary::Entry);
    for (const auto& [key, value] : dictionary) {
      if (!goesOn()) return;
      add(key);
      addValue(value);
    }
  }

 private:
  bool goesOn() const { return bytes_ <= kLookedThrough && depth_ <= kLookedInto; }

  void addValue(const Value& value) {
    ++depth_;
    if (const auto* text = value.as<std::string>()) add(*text);
    if (const auto* dictionary = value.as<Dictionary>()) add(*dictionary);
    if (const auto* list = value.as<List>()) addList(*list);
    --depth_;
  }

  void addList(const List& list) {
    bytes_ += list.capacity() * sizeof(Value);
    for (const auto& element : list) {
      if (!goesOn()) return;
      addValue(element);
    }
  }

  std::size_t bytes_ = 0;
  std::size_t depth_ = 0;
};

template <class Part>
std::size_t footprintOf(const Part& part) {
  Sum sum;
  sum.add(part);
  return sum.bytes();
}

std::size_t footprintOf(const platform::URL& url) { return footprintOf(url.absoluteString()); }

std::size_t footprintOf(const Price& price) {
  return price.text() ? footprintOf(*price.text()) : 0;
}

std::size_t footprintOf(std::int64_t) { return 0; }

template <class Part>
std::size_t footprintOf(const std::optional<Part>& part) {
  return part ? kField + footprintOf(*part) : 0;
}

std::size_t footprint(const OrderCompletedProduct& record) {
  return kField + footprintOf(record.id) + footprintOf(record.title) + footprintOf(record.url) +
         footprintOf(record.price) + footprintOf(record.quantity);
}

template <class Record>
std::size_t footprintOfAll(const std::vector<Record>& records) {
  std::size_t bytes = kField;
  for (const auto& record : records) {
    if (bytes > kLookedThrough) break;
    bytes += sizeof(Record) + footprint(record);
  }
  return bytes;
}

}  // namespace

std::size_t footprint(const Dictionary& dictionary) { return footprintOf(dictionary); }

std::size_t footprint(const ProductProperties& record) {
  return kField + footprintOf(record.id) + footprintOf(record.title) + footprintOf(record.price) +
         footprintOf(record.url) + footprintOf(record.meta) +
         (record.categories ? footprintOfAll(*record.categories) : 0);
}

std::size_t footprint(const ProductCategory& record) {
  return kField + footprintOf(record.id) + footprintOf(record.title) + footprintOf(record.url);
}

std::size_t footprint(const ProductSearchedProperties& record) {
  return kField + footprintOf(record.query) + footprintOf(record.url);
}

std::size_t footprint(const OrderCompletedProperties& record) {
  return footprintOf(record.id) + footprintOf(record.revenue) + footprintOfAll(record.products);
}

}  // namespace quenwick
