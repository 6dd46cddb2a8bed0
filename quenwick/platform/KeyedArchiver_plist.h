#pragma once

#include <plist/plist.h>

#include <cstdint>
#include <map>
#include <string>

#include "quenwick/platform/URLRequest.h"
#include "quenwick/platform/Value.h"

namespace quenwick::platform {

/// Puts objects into an archive's table, each once it is met.
class KeyedArchiver {
 public:
  KeyedArchiver();

  /// The archive of the value, once. Throws `NotArchivable`.
  Bytes archive(const Value& root);

 private:
  plist_t add(const Value& value);
  static plist_t inlined(const Value& value);
  plist_t append(plist_t object);
  plist_t addObject(const char* name, plist_t* object = nullptr);
  plist_t addList(const List& list);
  plist_t addDictionary(const Dictionary& map);
  plist_t classOf(const char* name);

  plist_t objects_;  // of the archive that is made
  std::map<std::string, std::uint64_t> classes_;
};

}  // namespace quenwick::platform
