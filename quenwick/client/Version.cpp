#include "quenwick/client/Version.h"

#include <string>

#include "quenwick/resources/LibraryBundle.h"

namespace quenwick {

std::string_view v0::version() {
  static const auto& text =
      *new std::string(libraryBundle().text("CFBundleShortVersionString").value_or(""));
  return text;
}

}  // namespace quenwick
