#pragma once

#include <plist/plist.h>

#include <cstdint>
#include <cstdlib>
#include <memory>

namespace quenwick::platform {

/// What libplist gives away to be freed.
struct FreePlist {
  void operator()(void* node) const { plist_free(node); }
  void operator()(char* text) const { std::free(text); }
};
using PlistNode = std::unique_ptr<void, FreePlist>;
using PlistText = std::unique_ptr<char, FreePlist>;

/// Thrown where an archive cannot be made or read; `KeyedArchive` lets none out.
struct NotArchivable {};

/// What every archive says of itself.
constexpr auto kArchiver = "NSKeyedArchiver";
constexpr std::uint64_t kArchiveVersion = 100'000;

/// How deep lists and dictionaries may nest in an archive.
constexpr int kMaximumArchiveDepth = 512;

}  // namespace quenwick::platform
