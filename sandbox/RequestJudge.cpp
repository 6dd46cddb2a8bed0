#include "sandbox/RequestJudge.h"

#include <algorithm>

#include "sandbox/JSONNode.h"
#include "sandbox/Refusal.h"
#include "sandbox/RepeatedKey.h"
#include "sandbox/RequestHead.h"
#include "sandbox/Text.h"

namespace quenwick::sandbox {
namespace {

[[noreturn]] void refuse(std::string field, std::string reason) {
  throw Refusal{.field = std::move(field), .reason = std::move(reason)};
}

/// Takes what stands before the separator off the text's front, in lower case and without blanks.
std::string takePart(std::string_view& text, char separator) {
  const auto end = std::min(text.find(separator), text.size());
  std::string part;
  for (const char c : text.substr(0, end)) {
    if (c != ' ' && c != '\t') part += lowerCase(c);
  }
  text.remove_prefix(std::min(end + 1, text.size()));
  return part;
}

/// "application/json", with no parameter but a charset of UTF-8.
bool isJSON(std::string_view contentType) {
  if (takePart(contentType, ';') != "application/json") return false;
  while (!contentType.empty()) {
    const std::string parameter = takePart(contentType, ';');
    if (parameter != "charset=utf-8" && parameter != "charset=\"utf-8\"") return false;
  }
  return true;
}

}  // namespace

void judgePath(const RequestHead& head, const std::string& path) {
  if (head.path != path) refuse("path", "must be " + path);
  if (!head.query.empty()) refuse("query", "must be empty");
}

boost::json::value judgeJSONPost(const RequestHead& head, const std::string& body) {
  if (head.method != "POST") refuse("method", "must be POST");
  if (!isJSON(head.header("Content-Type"))) refuse("Content-Type", "must be application/json");
  if (const auto key = repeatedKey(body)) refuse(*key, "stands twice");
  try {
    return parseJSON(body);
  } catch (const JSONError& error) {
    refuse("body", error.what());
  }
}

}  // namespace quenwick::sandbox
