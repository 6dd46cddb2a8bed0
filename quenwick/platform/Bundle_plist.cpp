#include <plist/plist.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>

#include "quenwick/platform/Bundle.h"
#include "quenwick/platform/HostConfiguration.h"
#include "quenwick/platform/LogSink.h"
#include "quenwick/platform/PropertyList.h"
#include "quenwick/platform/PropertyListShape.h"

namespace quenwick::platform {
namespace {

struct Free {
  void operator()(void* node) const { plist_free(node); }
  void operator()(char* text) const { std::free(text); }
};
using Text = std::unique_ptr<char, Free>;

Value read(plist_t node);

Value readText(plist_t node) {
  std::uint64_t length = 0;
  const char* text = plist_get_string_ptr(node, &length);
  return std::string_view(text, length);
}

Value readInteger(plist_t node) {
  std::uint64_t number = 0;
  plist_get_uint_val(node, &number);
  // The reader does not tell signed from unsigned: what fits a signed integer is one.
  return static_cast<std::int64_t>(number);
}

List readArray(plist_t node) {
  List list;
  for (std::uint32_t i = 0; i < plist_array_get_size(node); ++i) {
    list.push_back(read(plist_array_get_item(node, i)));
  }
  return list;
}

Dictionary readDictionary(plist_t node) {
  Dictionary dictionary;
  plist_dict_iter iterator = nullptr;
  plist_dict_new_iter(node, &iterator);
  Text ownedIterator(static_cast<char*>(iterator));
  for (;;) {
    char* key = nullptr;
    plist_t item = nullptr;
    plist_dict_next_item(node, iterator, &key, &item);
    Text ownedKey(key);
    if (!item) return dictionary;
    dictionary.set(key, read(item));
  }
}

Value read(plist_t node) {
  switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
      std::uint8_t flag = 0;
      plist_get_bool_val(node, &flag);
      return flag != 0;
    }
    case PLIST_UINT:
      return readInteger(node);
    case PLIST_REAL: {
      double number = 0;
      plist_get_real_val(node, &number);
      return number;
    }
    case PLIST_STRING:
      return readText(node);
    case PLIST_ARRAY:
      return readArray(node);
    case PLIST_DICT:
      return readDictionary(node);
    default:
      return nullptr;
  }
}

std::filesystem::path executable() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error);
}

std::optional<std::string> contents(const std::filesystem::path& file) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) return std::nullopt;
  std::ifstream stream(file, std::ios::binary);
  if (!stream) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

/// The bytes of the application's Info.plist; none where it has none.
std::optional<std::string> mainInfo() {
  if (auto configured = hostConfiguration().infoPlist) {
    auto info = contents(*configured);
    if (!info) logPlatformError("The configured Info.plist cannot be read");
    return info;
  }
  auto program = executable();
  auto besides = program.parent_path();
  if (auto info = contents(besides / "Info.plist")) return info;
  return contents(besides.parent_path() / "share" / program.filename() / "Info.plist");
}

Dictionary mainDictionary() {
  auto bytes = mainInfo();
  if (!bytes) return {};
  auto info = parsePropertyList(*bytes);
  if (auto* dictionary = info ? info->as<Dictionary>() : nullptr) return std::move(*dictionary);
  logPlatformError("The application's Info.plist is damaged: it counts as empty");
  return {};
}

Bundle makeMain() {
  Dictionary info = mainDictionary();
  const auto& host = hostConfiguration();
  if (host.bundleIdentifier) info.set("CFBundleIdentifier", *host.bundleIdentifier);
  if (host.bundleVersion) info.set("CFBundleShortVersionString", *host.bundleVersion);
  const auto* identifier = info.find("CFBundleIdentifier");
  if (!identifier || !identifier->as<std::string>()) {
    logPlatformError("The application has no bundle identifier: its state is kept under the name " +
                     executable().filename().string());
  }
  return Bundle(std::move(info));
}

}  // namespace

std::optional<Value> parsePropertyList(std::string_view bytes) {
  if (bytes.size() > std::numeric_limits<std::uint32_t>::max()) return std::nullopt;
  if (bytes.starts_with("bplist") && !isBinaryPropertyListOfBoundedShape(bytes)) {
    return std::nullopt;
  }
  plist_t root = nullptr;
  plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &root);
  if (!root) return std::nullopt;
  std::unique_ptr<void, Free> owned(root);
  return read(root);
}

Bundle::Bundle(std::string_view infoPropertyList, Resources resources)
    : resources_(std::move(resources)) {
  auto info = parsePropertyList(infoPropertyList);
  if (!info) return;
  if (const auto* dictionary = info->as<Dictionary>()) info_ = *dictionary;
}

const Bundle& Bundle::main() {
  HeldLog held;
  static const auto& instance = *new Bundle(makeMain());
  return instance;
}

std::optional<std::string> Bundle::text(std::string_view key) const {
  const auto* value = info_.find(key);
  const auto* text = value ? value->as<std::string>() : nullptr;
  return text ? std::optional(*text) : std::nullopt;
}

std::string Bundle::identifierOrExecutable() const {
  auto identifier = text("CFBundleIdentifier");
  return identifier ? *std::move(identifier) : executable().filename().string();
}

const std::string* Bundle::resource(std::string_view name, std::string_view extension) const {
  auto found = resources_.find(std::string(name).append(".").append(extension));
  return found == resources_.end() ? nullptr : &found->second;
}

}  // namespace quenwick::platform
