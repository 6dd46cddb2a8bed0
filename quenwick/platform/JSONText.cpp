#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <utility>

#include "quenwick/platform/JSONSerialization.h"
#include "quenwick/platform/Text.h"

namespace quenwick::platform {
namespace {

constexpr std::size_t kFirstCapacity = 2'048;
/// Room for the quotes of a text.
constexpr std::size_t kSlack = 2;

/// Bytes that are appended one after the other. The first of them lie on the stack.
class Output {
 public:
  Output() = default;
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  /// From here on, that many bytes may be written at `end`.
  void makeRoom(std::size_t count) {
    if (capacity_ - size_ >= count) return;
    capacity_ = std::max(capacity_ * 2, size_ + count);
    auto more = std::make_unique_for_overwrite<char[]>(capacity_);
    std::memcpy(more.get(), bytes_, size_);
    bytes_ = more.get();
    more_ = std::move(more);
  }
  char* end() { return bytes_ + size_; }
  void setEnd(const char* end) { size_ = static_cast<std::size_t>(end - bytes_); }

  void add(char c) {
    makeRoom(1);
    bytes_[size_++] = c;
  }
  void add(std::string_view text) {
    makeRoom(text.size());
    std::memcpy(end(), text.data(), text.size());
    size_ += text.size();
  }
  std::string text() const { return {bytes_, size_}; }

 private:
  std::size_t capacity_ = kFirstCapacity;
  std::size_t size_ = 0;
  std::array<char, kFirstCapacity> first_;  // not set to anything
  std::unique_ptr<char[]> more_;
  char* bytes_ = first_.data();
};

/// Whether none of the word's bytes is a control character, a quote, a backslash or beyond ASCII.
bool isPlain(std::uint64_t word) {
  constexpr std::uint64_t kOnes = 0x0101010101010101;
  auto quotes = word ^ (kOnes * '"');
  auto backslashes = word ^ (kOnes * '\\');
  // A byte's top bit is set where it is less than what is taken away, or beyond ASCII.
  auto marked = word | (word - kOnes * 0x20) | (quotes - kOnes) | (backslashes - kOnes);
  return (marked & (kOnes * 0x80)) == 0;
}

class Writer {
 public:
  explicit Writer(JSONWritingOptions options)
      : isPretty_(options == JSONWritingOptions::prettyPrinted) {}

  void write(const Value& value) {
    std::visit([this](const auto& kind) { write(kind); }, value.storage());
  }

  void write(const List& list) {
    open('[');
    for (bool isFirst = true; const auto& element : list) {
      separate(isFirst);
      write(element);
    }
    close(']', list.empty());
  }

  void write(const Dictionary& dictionary) {
    open('{');
    for (bool isFirst = true; const auto& [key, element] : dictionary) {
      separate(isFirst);
      write(key);
      out_.add(':');
      if (isPretty_) out_.add(' ');
      write(element);
    }
    close('}', dictionary.empty());
  }

  std::string text() const { return out_.text(); }

 private:
  void write(std::nullptr_t) { out_.add("null"); }
  void write(bool flag) { out_.add(flag ? std::string_view("true") : "false"); }
  void write(std::int64_t number) { writeInteger(number); }
  void write(std::uint64_t number) { writeInteger(number); }

  void writeInteger(auto number) {
    constexpr std::size_t kLongest = std::numeric_limits<std::uint64_t>::digits10 + 2;
    out_.makeRoom(kLongest);
    out_.setEnd(std::to_chars(out_.end(), out_.end() + kLongest, number).ptr);
  }

  void write(double number) {
    if (!std::isfinite(number)) throw JSONError("a number is not finite");
    if (writeHundredths(number)) return;
    // Most numbers are short; the longest has more than 300 digits.
    std::array<char, 32> digits;
    auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), number,
                                      std::chars_format::fixed);
    if (error != std::errc()) return out_.add(shortestDecimal(number));
    std::string_view text(digits.data(), static_cast<std::size_t>(end - digits.data()));
    out_.add(text);
    if (text.find('.') == text.npos) out_.add(".0");
  }

  /// Writes whole hundredths, as amounts of money are; whether the number is that. Below fifteen
  /// digits no other text reads back as the same number and is shorter.
  bool writeHundredths(double number) {
    auto scaled = number * 100;
    if (!(std::abs(scaled) < 1e15) || number == 0) return false;
    auto hundredths = static_cast<std::int64_t>(scaled + std::copysign(0.5, scaled));
    if (static_cast<double>(hundredths) / 100 != number) return false;
    if (hundredths < 0) out_.add('-');
    auto amount = static_cast<std::uint64_t>(std::abs(hundredths));
    writeInteger(amount / 100);
    out_.add('.');
    out_.add(static_cast<char>('0' + amount / 10 % 10));
    if (amount % 10 != 0) out_.add(static_cast<char>('0' + amount % 10));
    return true;
  }

  void write(const std::string& text) {
    const char* from = text.data();
    const char* const last = from + text.size();
    bool isASCII = true;
    out_.makeRoom(text.size() + kSlack);
    char* to = out_.end();
    *to++ = '"';
    for (;;) {
      copyPlain<std::uint64_t>(from, last, to);
      copyPlain<std::uint32_t>(from, last, to);
      if (from == last) break;
      auto byte = static_cast<unsigned char>(*from++);
      isASCII = isASCII && byte < 0x80;
      if (byte >= 0x20 && byte != '"' && byte != '\\') {
        *to++ = static_cast<char>(byte);
      } else {
        out_.setEnd(to);
        writeEscaped(byte);
        out_.makeRoom(static_cast<std::size_t>(last - from) + kSlack);
        to = out_.end();
      }
    }
    *to++ = '"';
    out_.setEnd(to);
    if (!isASCII && !isUTF8(text)) throw JSONError("a text is not UTF-8");
  }

  /// Copies words of the text as long as they hold nothing to escape, which most do not.
  template <class Word>
  static void copyPlain(const char*& from, const char* last, char*& to) {
    constexpr std::uint64_t kBlanks = sizeof(Word) == 8 ? 0 : 0x2020202000000000;
    while (last - from >= static_cast<std::ptrdiff_t>(sizeof(Word))) {
      Word word;
      std::memcpy(&word, from, sizeof word);
      if (!isPlain(word | kBlanks)) return;
      std::memcpy(to, &word, sizeof word);
      from += sizeof word;
      to += sizeof word;
    }
  }

  void writeEscaped(unsigned char byte) {
    static constexpr std::string_view kNamed = "\b\t\n\f\r\"\\";
    static constexpr std::string_view kNames = "btnfr\"\\";
    static constexpr std::string_view kDigits = "0123456789abcdef";
    out_.add('\\');
    if (auto at = kNamed.find(static_cast<char>(byte)); at != kNamed.npos) {
      out_.add(kNames[at]);
    } else {
      out_.add(byte < 0x10 ? "u000" : "u001");
      out_.add(kDigits[byte & 15]);
    }
  }

  void open(char bracket) {
    if (++depth_ > JSONSerialization::maximumDepth)
      throw JSONError("the value is nested too deeply");
    out_.add(bracket);
  }

  void close(char bracket, bool isEmpty) {
    --depth_;
    if (isPretty_ && !isEmpty) breakLine();
    out_.add(bracket);
  }

  void separate(bool& isFirst) {
    if (!isFirst) out_.add(',');
    isFirst = false;
    if (isPretty_) breakLine();
  }

  void breakLine() { out_.add("\n" + std::string(depth_ * 2, ' ')); }

  bool isPretty_;
  std::size_t depth_ = 0;
  Output out_;
};

std::string textOf(const auto& json, JSONWritingOptions options) {
  Writer writer(options);
  writer.write(json);
  return writer.text();
}

}  // namespace

std::string JSONSerialization::text(const Value& value, JSONWritingOptions options) {
  return textOf(value, options);
}

std::string JSONSerialization::text(const Dictionary& dictionary, JSONWritingOptions options) {
  return textOf(dictionary, options);
}

std::string JSONSerialization::text(const List& list, JSONWritingOptions options) {
  return textOf(list, options);
}

}  // namespace quenwick::platform
