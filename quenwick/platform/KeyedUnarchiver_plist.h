#pragma once

#include <plist/plist.h>

#include <string_view>

#include "quenwick/platform/KeyedArchiveNodes_plist.h"
#include "quenwick/platform/NSNumber.h"
#include "quenwick/platform/Value.h"

namespace quenwick::platform {

/// Reads the objects of an archive's table. Throws `NotArchivable`, as every function here does,
/// where the bytes are no archive or an object is of another class.
class KeyedUnarchiver {
 public:
  /// Of bytes whose shape is bounded (PropertyListShape.h): libplist is not safe with others.
  explicit KeyedUnarchiver(std::string_view bytes);

  /// The object that the archive is of.
  Value root();

  /// The same, which must be a number.
  NSNumber rootNumber() const;

 private:
  plist_t rootObject() const;
  plist_t object(plist_t reference) const;
  Value read(plist_t node, int depth);
  Value readInstance(plist_t instance, int depth);
  List readList(plist_t references, int depth);
  Dictionary readDictionary(plist_t instance, int depth);

  PlistNode archive_;
  plist_t objects_ = nullptr;
  int visited_ = 0;
};

}  // namespace quenwick::platform
