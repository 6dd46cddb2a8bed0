#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

/// What libFuzzer, or the program that reads a corpus, calls with each input.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace quenwick::fuzz {

/// Ends the process, with the property's name and what broke it, unless the property holds.
inline void holds(bool isSo, std::string_view property, std::string_view shown = {}) {
  if (isSo) return;
  auto line = std::string("\nDoes not hold: ").append(property).append("\n").append(shown);
  std::fprintf(stderr, "%s\n", line.c_str());
  std::abort();
}

/// An input is text: its first lines are what they are called in each target, the last is the rest.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size)
      : rest_(reinterpret_cast<const char*>(data), size) {}

  /// The text up to the next mark, which is left out; all of it where there is none.
  std::string_view until(std::string_view mark) {
    auto taken = rest_.substr(0, rest_.find(mark));
    rest_.remove_prefix(std::min(rest_.size(), taken.size() + mark.size()));
    return taken;
  }
  std::string_view line() { return until("\n"); }
  std::string_view rest() const { return rest_; }
  bool isEmpty() const { return rest_.empty(); }

 private:
  std::string_view rest_;
};

}  // namespace quenwick::fuzz
