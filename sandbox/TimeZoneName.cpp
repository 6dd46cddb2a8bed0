#include "sandbox/TimeZoneName.h"

#include <algorithm>
#include <filesystem>

#include "sandbox/Text.h"

namespace quenwick::sandbox {
namespace {

/// "Berlin", "Port-au-Prince", "GMT+5": a capital, then letters, digits, "_", "-" and "+".
bool isPart(std::string_view part) {
  return !part.empty() && isLetter(part.front()) && lowerCase(part.front()) != part.front() &&
         std::ranges::all_of(part, [](char c) {
           return isLetter(c) || isDigit(c) || c == '_' || c == '-' || c == '+';
         });
}

bool hasForm(std::string_view text) {
  while (true) {
    const auto slash = std::min(text.find('/'), text.size());
    if (!isPart(text.substr(0, slash))) return false;
    if (slash == text.size()) return true;
    text.remove_prefix(slash + 1);
  }
}

}  // namespace

bool isTimeZoneName(std::string_view text) {
  if (!hasForm(text)) return false;
  std::error_code ignored;
  const std::filesystem::path zones = "/usr/share/zoneinfo";
  if (!std::filesystem::is_regular_file(zones / "Etc/UTC", ignored)) return true;
  return std::filesystem::is_regular_file(zones / text, ignored);
}

}  // namespace quenwick::sandbox
