#include "quenwick/platform/KeyedArchive.h"

#include <algorithm>

#include "quenwick/platform/KeyedArchiver_plist.h"
#include "quenwick/platform/KeyedUnarchiver_plist.h"
#include "quenwick/platform/PropertyListShape.h"

namespace quenwick::platform {
namespace {

constexpr std::size_t kMaximumSize = 64U << 20U;

/// What is too large, or would be too deep for libplist, is kept from it.
bool isReadable(std::string_view archive) {
  return archive.size() <= kMaximumSize && isBinaryPropertyListOfBoundedShape(archive);
}

bool isWithin(int depth, const Value& value) {
  if (depth < 0) return false;
  auto isItemWithin = [depth](const Value& item) { return isWithin(depth - 1, item); };
  if (const auto* list = value.as<List>()) return std::ranges::all_of(*list, isItemWithin);
  const auto* map = value.as<Dictionary>();
  return !map || std::ranges::all_of(*map, isItemWithin, &Dictionary::Entry::value);
}

/// What the work yields; none where it meets what is not archivable.
template <class Work>
auto noneWhereNotArchivable(Work work) -> std::optional<decltype(work())> {
  try {
    return work();
  } catch (const NotArchivable&) {
    return std::nullopt;
  }
}

KeyedUnarchiver unarchiver(std::string_view archive) {
  if (!isReadable(archive)) throw NotArchivable();
  return KeyedUnarchiver(archive);
}

}  // namespace

std::optional<Bytes> KeyedArchive::archivedData(const Value& root) {
  if (!isWithin(kMaximumArchiveDepth, root)) return std::nullopt;
  auto bytes = noneWhereNotArchivable([&] { return KeyedArchiver().archive(root); });
  return bytes && isReadable(*bytes) ? bytes : std::nullopt;
}

std::optional<Value> KeyedArchive::unarchivedObject(std::string_view archive) {
  return noneWhereNotArchivable([&] { return unarchiver(archive).root(); });
}

std::optional<NSNumber> KeyedArchive::unarchivedNumber(std::string_view archive) {
  return noneWhereNotArchivable([&] { return unarchiver(archive).rootNumber(); });
}

}  // namespace quenwick::platform
