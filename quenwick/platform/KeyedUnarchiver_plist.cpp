#include "quenwick/platform/KeyedUnarchiver_plist.h"

#include <set>
#include <string>
#include <utility>
#include <vector>

namespace quenwick::platform {
namespace {

constexpr int kMaximumObjects = 100'000;

plist_t item(plist_t dictionary, const char* key, plist_type type = PLIST_NONE) {
  if (plist_get_node_type(dictionary) != PLIST_DICT) throw NotArchivable();
  auto* found = plist_dict_get_item(dictionary, key);
  if (!found || (type != PLIST_NONE && plist_get_node_type(found) != type)) {
    throw NotArchivable();
  }
  return found;
}

std::string text(plist_t node) {
  if (plist_get_node_type(node) != PLIST_STRING) throw NotArchivable();
  std::uint64_t size = 0;
  const char* found = plist_get_string_ptr(node, &size);
  return found ? std::string(found, size) : std::string();
}

std::string data(plist_t node) {
  std::uint64_t size = 0;
  const char* found = plist_get_data_ptr(node, &size);
  return found ? std::string(found, size) : std::string();
}

std::uint64_t integer(plist_t node) {
  if (plist_get_node_type(node) != PLIST_UINT) throw NotArchivable();
  std::uint64_t number = 0;
  plist_get_uint_val(node, &number);
  return number;
}

/// Whether an integer with its highest bit set is a large one and not a negative one, which only
/// the written form tells.
bool isUnsigned(plist_t node) {
  char* xml = nullptr;
  std::uint32_t size = 0;
  plist_to_xml(node, &xml, &size);
  PlistText owned(xml);
  return xml && std::string_view(xml, size).find("<integer>-") == std::string_view::npos;
}

NSNumber::Storage number(plist_t node) {
  std::uint8_t flag = 0;
  double real = 0;
  switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN:
      plist_get_bool_val(node, &flag);
      return flag != 0;
    case PLIST_REAL:
      plist_get_real_val(node, &real);
      return real;
    default: {
      auto bits = integer(node);
      auto number = static_cast<std::int64_t>(bits);
      if (number < 0 && isUnsigned(node)) return bits;
      return number;
    }
  }
}

}  // namespace

KeyedUnarchiver::KeyedUnarchiver(std::string_view bytes) {
  plist_t archive = nullptr;
  plist_from_bin(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &archive);
  archive_.reset(archive);
  if (text(item(archive, "$archiver")) != kArchiver ||
      integer(item(archive, "$version")) != kArchiveVersion) {
    throw NotArchivable();
  }
  objects_ = item(archive, "$objects", PLIST_ARRAY);
}

plist_t KeyedUnarchiver::rootObject() const {
  return object(item(item(archive_.get(), "$top", PLIST_DICT), "root"));
}

Value KeyedUnarchiver::root() { return read(rootObject(), 0); }

NSNumber KeyedUnarchiver::rootNumber() const { return NSNumber(number(rootObject())); }

/// What a reference refers to.
plist_t KeyedUnarchiver::object(plist_t reference) const {
  if (plist_get_node_type(reference) != PLIST_UID) throw NotArchivable();
  std::uint64_t index = 0;
  plist_get_uid_val(reference, &index);
  if (index == 0 || index >= plist_array_get_size(objects_)) throw NotArchivable();
  return plist_array_get_item(objects_, static_cast<std::uint32_t>(index));
}

Value KeyedUnarchiver::readInstance(plist_t instance, int depth) {
  auto name = text(item(object(item(instance, "$class")), "$classname"));
  if (name == "NSNull") return nullptr;
  if (name == "NSArray" || name == "NSMutableArray") {
    return readList(item(instance, "NS.objects", PLIST_ARRAY), depth);
  }
  if (name == "NSDictionary" || name == "NSMutableDictionary") {
    return readDictionary(instance, depth);
  }
  if (name == "NSString" || name == "NSMutableString") return text(item(instance, "NS.string"));
  if (name == "NSData" || name == "NSMutableData") {
    return data(item(instance, "NS.data", PLIST_DATA));
  }
  throw NotArchivable();
}

List KeyedUnarchiver::readList(plist_t references, int depth) {
  List list;
  for (std::uint32_t i = 0; i < plist_array_get_size(references); ++i) {
    list.push_back(read(object(plist_array_get_item(references, i)), depth + 1));
  }
  return list;
}

Dictionary KeyedUnarchiver::readDictionary(plist_t instance, int depth) {
  auto keys = readList(item(instance, "NS.keys", PLIST_ARRAY), depth);
  auto values = readList(item(instance, "NS.objects", PLIST_ARRAY), depth);
  if (keys.size() != values.size()) throw NotArchivable();
  std::set<std::string> known;
  std::vector<Dictionary::Entry> inOrder;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    const auto* key = keys[i].as<std::string>();
    if (!key || !known.insert(*key).second) throw NotArchivable();
    inOrder.push_back({*key, std::move(values[i])});
  }
  return Dictionary::ofUnique(std::move(inOrder));
}

Value KeyedUnarchiver::read(plist_t node, int depth) {
  if (depth > kMaximumArchiveDepth || ++visited_ > kMaximumObjects) throw NotArchivable();
  switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN:
    case PLIST_UINT:
    case PLIST_REAL:
      return std::visit([](auto number) { return Value(number); }, number(node));
    case PLIST_STRING:
      return text(node);
    case PLIST_DATA:
      return data(node);
    case PLIST_DICT:
      return readInstance(node, depth);
    default:
      throw NotArchivable();
  }
}

}  // namespace quenwick::platform
