#include "sandbox/Answer.h"

#include <algorithm>

namespace quenwick::sandbox {
namespace {

constexpr std::size_t kBlockSize = 16384;

}  // namespace

Body::Body(std::string text) : text_(std::move(text)), period_(text_.size()), size_(period_) {}

Body Body::repeated(std::string text, std::uint64_t size) {
  if (text.empty()) text = "x";
  const std::string unit = text;
  while (text.size() < std::min<std::uint64_t>(size, kBlockSize)) text += unit;
  if (text.size() > size) text.resize(size);

  Body body(std::move(text));
  body.period_ = body.text_.size() / unit.size() * unit.size();
  if (body.period_ == 0) body.period_ = body.text_.size();
  body.size_ = size;
  return body;
}

std::string_view Body::piece(std::uint64_t offset, std::uint64_t end) const {
  const std::uint64_t start = size_ == text_.size() ? offset : offset % period_;
  return std::string_view(text_).substr(start, end - offset);
}

Answer jsonAnswer(int status, std::string json) {
  return {.status = status, .type = "application/json", .body = Body(std::move(json))};
}

}  // namespace quenwick::sandbox
