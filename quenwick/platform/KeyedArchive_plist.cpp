#include "quenwick/platform/KeyedArchive.h"

#include <plist/plist.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "quenwick/platform/PropertyListShape.h"
#include "quenwick/platform/Text.h"

namespace quenwick::platform {
namespace {

constexpr int kMaximumDepth = 512;
constexpr auto kArchiver = "NSKeyedArchiver";
constexpr std::uint64_t kVersion = 100'000;
constexpr std::size_t kMaximumSize = 64U << 20U;

struct Free {
  void operator()(void* node) const { plist_free(node); }
  void operator()(char* text) const { std::free(text); }
};
using Node = std::unique_ptr<void, Free>;
using Text = std::unique_ptr<char, Free>;

/// Thrown where an archive cannot be made or read; never leaves this file.
struct NotArchivable {};

plist_t unsignedNode(std::uint64_t number) {
  if (number <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
    return plist_new_uint(number);
  }
  // Only read from text is a number of this size known not to be negative.
  auto text = "<plist><integer>" + std::to_string(number) + "</integer></plist>";
  plist_t node = nullptr;
  plist_from_xml(text.data(), static_cast<std::uint32_t>(text.size()), &node);
  if (!node) throw NotArchivable();
  return node;
}

/// Whether an integer with its highest bit set is a large one and not a negative one, which only
/// the written form tells.
bool isUnsigned(plist_t node) {
  char* xml = nullptr;
  std::uint32_t size = 0;
  plist_to_xml(node, &xml, &size);
  Text owned(xml);
  return xml && std::string_view(xml, size).find("<integer>-") == std::string_view::npos;
}

bool isWithin(int depth, const Value& value) {
  if (depth < 0) return false;
  auto isItemWithin = [depth](const Value& item) { return isWithin(depth - 1, item); };
  if (const auto* list = value.as<List>()) return std::ranges::all_of(*list, isItemWithin);
  const auto* map = value.as<Dictionary>();
  return !map || std::ranges::all_of(*map, isItemWithin, &Dictionary::Entry::value);
}

/// Puts objects into an archive's table, each once it is met.
class Archiver {
 public:
  Archiver() : objects_(plist_new_array()) {
    plist_array_append_item(objects_, plist_new_string("$null"));
  }

  Bytes archive(const Value& root) {
    Node archive(plist_new_dict());
    plist_dict_set_item(archive.get(), "$version", plist_new_uint(kVersion));
    plist_dict_set_item(archive.get(), "$archiver", plist_new_string(kArchiver));
    plist_dict_set_item(archive.get(), "$objects", objects_);
    auto* top = plist_new_dict();
    plist_dict_set_item(archive.get(), "$top", top);
    plist_dict_set_item(top, "root", add(root));
    char* bytes = nullptr;
    std::uint32_t size = 0;
    plist_to_bin(archive.get(), &bytes, &size);
    Text owned(bytes);
    if (!bytes || size == 0) throw NotArchivable();
    return {bytes, size};
  }

 private:
  /// A reference to the value's object.
  plist_t add(const Value& value) {
    if (const auto* list = value.as<List>()) return addList(*list);
    if (const auto* map = value.as<Dictionary>()) return addDictionary(*map);
    if (value.isNull()) return addObject("NSNull");
    return append(inlined(value));
  }

  /// Numbers, texts and data stand in the table themselves.
  static plist_t inlined(const Value& value) {
    if (const auto* flag = value.as<bool>()) return plist_new_bool(*flag ? 1 : 0);
    if (const auto* number = value.as<std::uint64_t>()) return unsignedNode(*number);
    if (const auto* number = value.as<double>()) return plist_new_real(*number);
    if (const auto* number = value.as<std::int64_t>()) {
      return plist_new_uint(static_cast<std::uint64_t>(*number));
    }
    const auto& text = *value.as<std::string>();
    bool isText = isUTF8(text) && text.find('\0') == text.npos;
    return isText ? plist_new_string(text.c_str()) : plist_new_data(text.data(), text.size());
  }

  plist_t append(plist_t object) {
    plist_array_append_item(objects_, object);
    return plist_new_uid(plist_array_get_size(objects_) - 1);
  }

  /// An object of the class, without contents so far.
  plist_t addObject(const char* name, plist_t* object = nullptr) {
    auto* made = plist_new_dict();
    auto* reference = append(made);
    plist_dict_set_item(made, "$class", classOf(name));
    if (object) *object = made;
    return reference;
  }

  plist_t addList(const List& list) {
    plist_t object = nullptr;
    auto* reference = addObject("NSArray", &object);
    auto* items = plist_new_array();
    plist_dict_set_item(object, "NS.objects", items);
    for (const auto& item : list) plist_array_append_item(items, add(item));
    return reference;
  }

  plist_t addDictionary(const Dictionary& map) {
    plist_t object = nullptr;
    auto* reference = addObject("NSDictionary", &object);
    auto* keys = plist_new_array();
    auto* items = plist_new_array();
    plist_dict_set_item(object, "NS.keys", keys);
    plist_dict_set_item(object, "NS.objects", items);
    for (const auto& [key, item] : map) {
      plist_array_append_item(keys, add(key));
      plist_array_append_item(items, add(item));
    }
    return reference;
  }

  plist_t classOf(const char* name) {
    auto found = classes_.find(name);
    if (found == classes_.end()) {
      auto* description = plist_new_dict();
      plist_dict_set_item(description, "$classname", plist_new_string(name));
      auto* line = plist_new_array();
      plist_array_append_item(line, plist_new_string(name));
      plist_array_append_item(line, plist_new_string("NSObject"));
      plist_dict_set_item(description, "$classes", line);
      plist_array_append_item(objects_, description);
      found = classes_.emplace(name, plist_array_get_size(objects_) - 1).first;
    }
    return plist_new_uid(found->second);
  }

  plist_t objects_;
  std::map<std::string, std::uint64_t> classes_;
};

/// Reads the objects of an archive's table.
class Unarchiver {
 public:
  /// Throws `NotArchivable` where the bytes are no archive.
  explicit Unarchiver(std::string_view bytes) {
    if (bytes.size() > kMaximumSize || !isBinaryPropertyListOfBoundedShape(bytes)) {
      throw NotArchivable();
    }
    plist_t archive = nullptr;
    plist_from_bin(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &archive);
    archive_.reset(archive);
    if (text(item(archive, "$archiver")) != kArchiver ||
        integer(item(archive, "$version")) != kVersion) {
      throw NotArchivable();
    }
    objects_ = item(archive, "$objects", PLIST_ARRAY);
  }

  /// The object that the archive is of.
  plist_t root() const { return object(item(item(archive_.get(), "$top", PLIST_DICT), "root")); }

  Value read(plist_t node, int depth = 0) {
    if (depth > kMaximumDepth || ++visited_ > kMaximumObjects) throw NotArchivable();
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

  static NSNumber::Storage number(plist_t node) {
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

 private:
  static constexpr int kMaximumObjects = 100'000;

  static plist_t item(plist_t dictionary, const char* key, plist_type type = PLIST_NONE) {
    if (plist_get_node_type(dictionary) != PLIST_DICT) throw NotArchivable();
    auto* found = plist_dict_get_item(dictionary, key);
    if (!found || (type != PLIST_NONE && plist_get_node_type(found) != type)) {
      throw NotArchivable();
    }
    return found;
  }

  static std::string text(plist_t node) {
    if (plist_get_node_type(node) != PLIST_STRING) throw NotArchivable();
    std::uint64_t size = 0;
    const char* found = plist_get_string_ptr(node, &size);
    return found ? std::string(found, size) : std::string();
  }

  static std::string data(plist_t node) {
    std::uint64_t size = 0;
    const char* found = plist_get_data_ptr(node, &size);
    return found ? std::string(found, size) : std::string();
  }

  static std::uint64_t integer(plist_t node) {
    if (plist_get_node_type(node) != PLIST_UINT) throw NotArchivable();
    std::uint64_t number = 0;
    plist_get_uint_val(node, &number);
    return number;
  }

  /// What a reference refers to.
  plist_t object(plist_t reference) const {
    if (plist_get_node_type(reference) != PLIST_UID) throw NotArchivable();
    std::uint64_t index = 0;
    plist_get_uid_val(reference, &index);
    if (index == 0 || index >= plist_array_get_size(objects_)) throw NotArchivable();
    return plist_array_get_item(objects_, static_cast<std::uint32_t>(index));
  }

  Value readInstance(plist_t instance, int depth) {
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

  List readList(plist_t references, int depth) {
    List list;
    for (std::uint32_t i = 0; i < plist_array_get_size(references); ++i) {
      list.push_back(read(object(plist_array_get_item(references, i)), depth + 1));
    }
    return list;
  }

  Dictionary readDictionary(plist_t instance, int depth) {
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

  Node archive_;
  plist_t objects_ = nullptr;
  int visited_ = 0;
};

/// What the work yields; none where it meets what is not archivable.
template <class Work>
auto noneWhereNotArchivable(Work work) -> std::optional<decltype(work())> {
  try {
    return work();
  } catch (const NotArchivable&) {
    return std::nullopt;
  }
}

}  // namespace

std::optional<Bytes> KeyedArchive::archivedData(const Value& root) {
  if (!isWithin(kMaximumDepth, root)) return std::nullopt;
  auto bytes = noneWhereNotArchivable([&] { return Archiver().archive(root); });
  bool isReadable =
      bytes && bytes->size() <= kMaximumSize && isBinaryPropertyListOfBoundedShape(*bytes);
  return isReadable ? bytes : std::nullopt;
}

std::optional<Value> KeyedArchive::unarchivedObject(std::string_view archive) {
  return noneWhereNotArchivable([&] {
    Unarchiver unarchiver(archive);
    return unarchiver.read(unarchiver.root());
  });
}

std::optional<NSNumber> KeyedArchive::unarchivedNumber(std::string_view archive) {
  return noneWhereNotArchivable([&] {
    Unarchiver unarchiver(archive);
    return NSNumber(Unarchiver::number(unarchiver.root()));
  });
}

}  // namespace quenwick::platform
