#include "sandbox/RequestHead.h"

#include <algorithm>

#include "sandbox/Text.h"

namespace quenwick::sandbox {
namespace {

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t\r");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

/// Takes a part off the text's front, up to a separator, which goes too.
std::string_view takeUntil(std::string_view& text, char separator) {
  const auto end = std::min(text.find(separator), text.size());
  const auto part = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return part;
}

bool isSameName(std::string_view left, std::string_view right) {
  return std::ranges::equal(left, right, {}, lowerCase, lowerCase);
}

}  // namespace

RequestHead::RequestHead(std::string_view text) {
  std::string_view firstLine = takeUntil(text, '\n');
  method = takeUntil(firstLine, ' ');
  readTarget(takeUntil(firstLine, ' '));
  headers.reserve(16);
  while (!text.empty()) {
    std::string_view line = takeUntil(text, '\n');
    const auto name = takeUntil(line, ':');
    if (!trimmed(name).empty()) headers.emplace_back(name, trimmed(line));
  }
}

void RequestHead::readTarget(std::string_view target) {
  path = takeUntil(target, '?');
  query = target;
  if (const auto scheme = path.find("://"); !path.starts_with('/') && scheme != path.npos) {
    path.remove_prefix(std::min(path.find('/', scheme + 3), path.size()));
    if (path.empty()) path = "/";
  }
}

std::string_view RequestHead::header(std::string_view name) const {
  const auto found = std::ranges::find_if(
      headers, [name](const auto& each) { return isSameName(each.first, name); });
  return found == headers.end() ? std::string_view() : found->second;
}

}  // namespace quenwick::sandbox
