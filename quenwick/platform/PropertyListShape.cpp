#include "quenwick/platform/PropertyListShape.h"

#include <cstdint>

namespace quenwick::platform {
namespace {

constexpr std::string_view kMagic = "bplist00";
constexpr std::size_t kTrailerSize = 32;
constexpr int kMaximumDepth = 64;
constexpr int kMaximumObjects = 100'000;

/// Walks through the containers of a property list as a reader would, and counts.
class Walk {
 public:
  explicit Walk(std::string_view bytes) : bytes_(bytes) {
    auto trailer = bytes_.size() - kTrailerSize;
    offsetSize_ = static_cast<unsigned char>(bytes_[trailer + 6]);
    referenceSize_ = static_cast<unsigned char>(bytes_[trailer + 7]);
    count_ = number(trailer + 8, 8);
    top_ = number(trailer + 16, 8);
    table_ = number(trailer + 24, 8);
  }

  bool isBounded() { return visit(top_, 0); }

 private:
  bool visit(std::uint64_t index, int depth) {
    if (++visited_ > kMaximumObjects || depth > kMaximumDepth || index >= count_) return false;
    // Factors are bounded first: nothing here can wrap around.
    if (count_ > bytes_.size() || table_ > bytes_.size() || offsetSize_ > 8) return false;
    auto at = number(table_ + index * offsetSize_, offsetSize_);
    if (at >= bytes_.size()) return false;
    auto marker = static_cast<unsigned char>(bytes_[at]);
    unsigned kind = marker >> 4U;
    if (kind != 0xA && kind != 0xC && kind != 0xD) return true;
    std::uint64_t elements = marker & 0xFU;
    std::uint64_t first = at + 1;
    if (elements == 0xF) {
      if (first >= bytes_.size()) return false;
      auto size = std::uint64_t{1} << (static_cast<unsigned char>(bytes_[first]) & 0xFU);
      if (size > 8) return false;
      elements = number(first + 1, size);
      first += 1 + size;
    }
    if (elements > bytes_.size()) return false;
    if (kind == 0xD) elements *= 2;  // keys, then values
    return visitAll(first, elements, depth + 1);
  }

  bool visitAll(std::uint64_t first, std::uint64_t elements, int depth) {
    if (referenceSize_ == 0 || referenceSize_ > 8) return elements == 0;
    for (std::uint64_t i = 0; i < elements; ++i) {
      auto at = first + i * referenceSize_;
      if (at + referenceSize_ > bytes_.size()) return false;
      if (!visit(number(at, referenceSize_), depth)) return false;
    }
    return true;
  }

  /// The big-endian number of that many bytes; beyond the end there are zeros.
  std::uint64_t number(std::uint64_t at, std::uint64_t size) const {
    std::uint64_t value = 0;
    for (std::uint64_t i = 0; i < size; ++i) {
      auto byte = at + i < bytes_.size() ? static_cast<unsigned char>(bytes_[at + i]) : 0U;
      value = value << 8U | byte;
    }
    return value;
  }

  std::string_view bytes_;
  std::uint64_t offsetSize_ = 0;
  std::uint64_t referenceSize_ = 0;
  std::uint64_t count_ = 0;
  std::uint64_t top_ = 0;
  std::uint64_t table_ = 0;
  int visited_ = 0;
};

}  // namespace

bool isBinaryPropertyListOfBoundedShape(std::string_view bytes) {
  if (!bytes.starts_with(kMagic) || bytes.size() < kMagic.size() + kTrailerSize) return false;
  return Walk(bytes).isBounded();
}

}  // namespace quenwick::platform
