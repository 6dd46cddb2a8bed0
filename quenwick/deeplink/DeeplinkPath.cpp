#include "quenwick/deeplink/DeeplinkPath.h"

#include "quenwick/platform/RegularExpression.h"

namespace quenwick {
namespace {

constexpr std::array<std::string_view, 3> kPatterns = {"/p/rpm?/.+/url", "/p/cpm?/.+/c",
                                                       "/p/gom?/"};

const platform::RegularExpression& compiled(DeeplinkPath::Case shape) {
  static const auto& expressions = *new std::array{
      platform::RegularExpression::compile(kPatterns[0]),
      platform::RegularExpression::compile(kPatterns[1]),
      platform::RegularExpression::compile(kPatterns[2]),
  };
  return expressions.at(shape);
}

}  // namespace

std::string_view DeeplinkPath::rawValue() const { return kPatterns.at(value_); }

std::optional<DeeplinkPath> DeeplinkPath::path(const platform::URL& url) {
  const std::string_view text = url.absoluteString();
  for (auto shape : allCases) {
    bool isContained = text.find(shape.rawValue()) != text.npos;
    if (isContained || compiled(shape).isFound(text)) return shape;
  }
  return std::nullopt;
}

}  // namespace quenwick
