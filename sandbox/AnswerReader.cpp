#include "sandbox/AnswerReader.h"

#include <algorithm>
#include <array>

#include "sandbox/JSONNode.h"
#include "sandbox/Text.h"

namespace quenwick::sandbox {
namespace {

constexpr std::array kRedirects = {301, 302, 303, 307, 308};
constexpr std::uint64_t kLongestDelay = 3'600'000;
constexpr std::string_view kPage =
    "<!doctype html><title>The end of the chain</title><p>This is where the link leads.</p>\n";

/// Refuses keys but those that every answer takes and `own`.
void allowCommonAnd(const JSONNode& node, std::string_view own) {
  node.allowOnly({own, "status", "type", "headers", "body", "bodyBase64", "json", "repeatBody",
                  "chunked", "delay", "cut"});
}

void refuseControlBytes(const JSONNode& node, std::string_view text) {
  const bool isControl = std::ranges::any_of(
      text, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
  if (isControl) node.refuse("holds a control character");
}

void readHeaders(const JSONNode& node, Answer& answer) {
  for (const auto& [name, value] : node.members()) {
    refuseControlBytes(value, name);
    refuseControlBytes(value, value.text());
    if (name.empty() || name.find_first_of(": ") != std::string::npos) {
      value.refuse("is no header name");
    }
    answer.headers.emplace_back(name, value.text());
  }
}

/// Reads the one key that holds a body; none if there is no such key.
std::optional<std::string> readBody(const JSONNode& node) {
  std::optional<JSONNode> body;
  for (const std::string_view key : {"body", "bodyBase64", "json"}) {
    const auto member = node.member(key);
    if (body && member) member->refuse("there is another body beside it");
    if (member) body = member;
  }
  if (!body) return std::nullopt;
  if (node.member("json")) return body->json();
  if (node.member("body")) return body->text();
  auto bytes = bytesOfBase64(body->text());
  if (!bytes) body->refuse("is not Base64");
  return bytes;
}

Cut readCut(const JSONNode& node) {
  const std::string cut = node.text();
  if (cut == "before") return Cut::before;
  if (cut == "during") return Cut::during;
  node.refuse("must be \"before\" or \"during\"");
}

/// Reads what every kind of answer takes, over what `answer` has by default.
Answer readCommon(const JSONNode& node, Answer answer) {
  if (const auto status = node.member("status")) {
    answer.status = static_cast<int>(status->number(200, 599));
  }
  if (node.member("json")) answer.type = "application/json";
  if (const auto type = node.member("type")) {
    answer.type = type->text();
    refuseControlBytes(*type, answer.type);
  }
  if (const auto headers = node.member("headers")) readHeaders(*headers, answer);
  const auto body = readBody(node);
  if (body) answer.body = Body(*body);
  if (const auto repeat = node.member("repeatBody")) {
    answer.body = Body::repeated(body.value_or("x"), repeat->number(1, INT64_MAX));
  }
  if (const auto chunked = node.member("chunked")) answer.chunked = chunked->truth();
  if (const auto delay = node.member("delay")) {
    answer.delay = std::chrono::milliseconds(delay->number(0, kLongestDelay));
  }
  if (const auto cut = node.member("cut")) answer.cut = readCut(*cut);
  if (answer.cut == Cut::during && answer.body.size() < 2) answer.body = defaultEnd().body;
  return answer;
}

}  // namespace

Answer readHop(const JSONNode& node) {
  allowCommonAnd(node, "to");
  Answer answer = readCommon(node, {.status = 302});
  if (std::ranges::find(kRedirects, answer.status) == kRedirects.end()) {
    node.requiredMember("status").refuse("must be 301, 302, 303, 307 or 308 in a chain");
  }
  const JSONNode target = node.requiredMember("to");
  refuseControlBytes(target, target.text());
  answer.headers.emplace_back("Location", target.text());
  return answer;
}

Answer readEnd(const JSONNode& node) {
  allowCommonAnd(node, {});
  return readCommon(node, defaultEnd());
}

Answer readAnswer(const JSONNode& node, std::string_view ownKey) {
  allowCommonAnd(node, ownKey);
  return readCommon(node, {});
}

Answer defaultEnd() { return {.body = Body(std::string(kPage))}; }

}  // namespace quenwick::sandbox
