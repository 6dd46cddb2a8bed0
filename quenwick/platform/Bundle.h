#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "quenwick/platform/Export.h"
#include "quenwick/platform/Value.h"

namespace quenwick::platform::inline v0 {

/// An information dictionary and the resources beside it.
class QUENWICK_EXPORT Bundle {
 public:
  /// Bytes by file name.
  using Resources = std::map<std::string, std::string, std::less<>>;

  /// A bundle that lies in memory: a property list (any of its formats; an unreadable one counts
  /// as empty) and resources by file name.
  Bundle(std::string_view infoPropertyList, Resources resources);
  /// A bundle of that information and no resources.
  explicit Bundle(Dictionary info) : info_(std::move(info)) {}

  /// The application's own. Its Info.plist lies where the host's configuration says, beside the
  /// executable, or in ../share/<executable's name>/; identifier and version may also come from
  /// the configuration. Read once, with an error line where it is damaged and where it has no
  /// identifier.
  static const Bundle& main();

  /// What the property list says; empty where there is none.
  const Dictionary& infoDictionary() const { return info_; }

  /// A text of the information dictionary; none where it is absent or no text.
  std::optional<std::string> text(std::string_view key) const;

  /// "CFBundleIdentifier", or the executable's name where there is none.
  std::string identifierOrExecutable() const;

  /// The bytes of the named resource, or null.
  const std::string* resource(std::string_view name, std::string_view extension) const;

 private:
  Dictionary info_;
  Resources resources_;
};

}  // namespace quenwick::platform::inline v0
