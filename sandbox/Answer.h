#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quenwick::sandbox {

/// The bytes of an answer: a text, or a text repeated to any size without being held whole.
class Body {
 public:
  Body() = default;
  explicit Body(std::string text);

  /// `size` bytes made of `text` over and over; of "x" if it is empty.
  static Body repeated(std::string text, std::uint64_t size);

  std::uint64_t size() const { return size_; }
  bool isRepeated() const { return size_ != text_.size(); }

  /// The whole body, if it is not repeated.
  const std::string& text() const { return text_; }

  /// Some bytes from `offset` on, at least one and never past `end` (offset < end <= size()).
  std::string_view piece(std::uint64_t offset, std::uint64_t end) const;

 private:
  std::string text_;
  std::uint64_t period_ = 0;
  std::uint64_t size_ = 0;
};

/// Where a connection is cut instead of being answered in full.
enum class Cut { none, before, during };

/// What the servers answer at one place.
struct Answer {
  int status = 200;
  std::string type = "text/html; charset=utf-8";
  std::vector<std::pair<std::string, std::string>> headers = {};
  Body body = {};
  bool chunked = false;
  std::chrono::milliseconds delay{0};
  Cut cut = Cut::none;
};

Answer jsonAnswer(int status, std::string json);

}  // namespace quenwick::sandbox
