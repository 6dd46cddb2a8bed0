#pragma once

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include <quenwick/quenwick.h>

namespace shop {

/// What the shop did: said to the person at the terminal, and written down for whoever wants to
/// compare it with what arrived. A line of the file is an act and its details, between tabs:
/// "order_completed", "id=o-7", "products.0.id=42".
class Journal {
 public:
  explicit Journal(const std::optional<std::filesystem::path>& file);

  /// "  looks at      Boots"
  void say(const std::string& what, const std::string& text);
  void write(const std::string& act, const quenwick::Dictionary& details);

 private:
  std::ofstream file_;
};

}  // namespace shop
