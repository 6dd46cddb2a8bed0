#include "quenwick/platform/KeyedArchiver_plist.h"

#include <limits>

#include "quenwick/platform/KeyedArchiveNodes_plist.h"
#include "quenwick/platform/Text.h"

namespace quenwick::platform {
namespace {

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

}  // namespace

KeyedArchiver::KeyedArchiver() : objects_(plist_new_array()) {
  plist_array_append_item(objects_, plist_new_string("$null"));
}

Bytes KeyedArchiver::archive(const Value& root) {
  PlistNode archive(plist_new_dict());
  plist_dict_set_item(archive.get(), "$version", plist_new_uint(kArchiveVersion));
  plist_dict_set_item(archive.get(), "$archiver", plist_new_string(kArchiver));
  plist_dict_set_item(archive.get(), "$objects", objects_);
  auto* top = plist_new_dict();
  plist_dict_set_item(archive.get(), "$top", top);
  plist_dict_set_item(top, "root", add(root));
  char* bytes = nullptr;
  std::uint32_t size = 0;
  plist_to_bin(archive.get(), &bytes, &size);
  PlistText owned(bytes);
  if (!bytes || size == 0) throw NotArchivable();
  return {bytes, size};
}

/// A reference to the value's object.
plist_t KeyedArchiver::add(const Value& value) {
  if (const auto* list = value.as<List>()) return addList(*list);
  if (const auto* map = value.as<Dictionary>()) return addDictionary(*map);
  if (value.isNull()) return addObject("NSNull");
  return append(inlined(value));
}

/// Numbers, texts and data stand in the table themselves.
plist_t KeyedArchiver::inlined(const Value& value) {
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

plist_t KeyedArchiver::append(plist_t object) {
  plist_array_append_item(objects_, object);
  return plist_new_uid(plist_array_get_size(objects_) - 1);
}

/// An object of the class, without contents so far.
plist_t KeyedArchiver::addObject(const char* name, plist_t* object) {
  auto* made = plist_new_dict();
  auto* reference = append(made);
  plist_dict_set_item(made, "$class", classOf(name));
  if (object) *object = made;
  return reference;
}

plist_t KeyedArchiver::addList(const List& list) {
  plist_t object = nullptr;
  auto* reference = addObject("NSArray", &object);
  auto* items = plist_new_array();
  plist_dict_set_item(object, "NS.objects", items);
  for (const auto& item : list) plist_array_append_item(items, add(item));
  return reference;
}

plist_t KeyedArchiver::addDictionary(const Dictionary& map) {
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

plist_t KeyedArchiver::classOf(const char* name) {
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

}  // namespace quenwick::platform
