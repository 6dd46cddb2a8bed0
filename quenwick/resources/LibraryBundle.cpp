#include "quenwick/resources/LibraryBundle.h"

#include <string>
#include <string_view>

namespace quenwick {
namespace resources {

// Of the sources that the build makes of the files themselves.
extern const std::string_view kInfo;
extern const std::string_view kQuenwickStorage;

}  // namespace resources

const platform::Bundle& libraryBundle() {
  static const auto& instance = *new platform::Bundle(
      resources::kInfo, {{"QuenwickStorage.momd", std::string(resources::kQuenwickStorage)}});
  return instance;
}

}  // namespace quenwick
