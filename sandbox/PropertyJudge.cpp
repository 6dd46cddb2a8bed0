#include "sandbox/PropertyJudge.h"

#include <algorithm>
#include <array>

#include "sandbox/JSONNode.h"

namespace quenwick::sandbox {
namespace {

void judgeOptionalTexts(const JSONNode& node, std::initializer_list<std::string_view> keys) {
  for (const auto key : keys) {
    if (const auto text = node.member(key)) text->text();
  }
}

void judgeURL(const JSONNode& node) {
  const auto url = node.member("url");
  if (!url) return;
  const std::string text = url->text();
  const bool hasBlank = std::ranges::any_of(
      text, [](char c) { return static_cast<unsigned char>(c) <= 0x20 || c == 0x7F; });
  if (text.empty() || hasBlank) url->refuse("is no URL");
}

void judgeCategory(const JSONNode& node) {
  node.allowOnly({"id", "title", "url"});
  node.requiredMember("id").text();
  judgeOptionalTexts(node, {"title"});
  judgeURL(node);
}

void judgeProduct(const JSONNode& node) {
  node.allowOnly({"id", "title", "price", "url", "categories", "meta"});
  node.requiredMember("id").text();
  judgeOptionalTexts(node, {"title", "price"});
  judgeURL(node);
  if (const auto categories = node.member("categories")) {
    for (const JSONNode& category : categories->elements()) judgeCategory(category);
  }
  const JSONNode meta = node.requiredMember("meta");
  if (!meta.isObject()) meta.refuse("must be an object");
}

void judgeSearch(const JSONNode& node) {
  node.allowOnly({"query", "url"});
  node.requiredMember("query").text();
  judgeURL(node);
}

void judgeOrderLine(const JSONNode& node) {
  node.allowOnly({"id", "title", "url", "price", "quantity"});
  node.requiredMember("id").text();
  judgeOptionalTexts(node, {"title", "price"});
  judgeURL(node);
  if (const auto quantity = node.member("quantity")) quantity->integer();
}

void judgeOrder(const JSONNode& node) {
  node.allowOnly({"id", "revenue", "products"});
  judgeOptionalTexts(node, {"id", "revenue"});
  const JSONNode products = node.requiredMember("products");
  const auto lines = products.elements();
  if (lines.empty()) products.refuse("must not be empty");
  for (const JSONNode& line : lines) judgeOrderLine(line);
}

struct Kind {
  std::string_view event;
  void (*judge)(const JSONNode&);
};

constexpr std::array kKinds = {
    Kind{"product_viewed", judgeProduct},   Kind{"product_added", judgeProduct},
    Kind{"product_removed", judgeProduct},  Kind{"product_searched", judgeSearch},
    Kind{"category_viewed", judgeCategory}, Kind{"order_completed", judgeOrder}};

}  // namespace

bool judgeProperties(std::string_view event, const JSONNode& properties) {
  const auto* kind = std::ranges::find(kKinds, event, &Kind::event);
  if (kind == kKinds.end()) return false;
  kind->judge(properties);
  return true;
}

}  // namespace quenwick::sandbox
