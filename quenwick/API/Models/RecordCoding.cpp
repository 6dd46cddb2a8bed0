#include "quenwick/API/Models/RecordCoding.h"

#include <cmath>
#include <limits>

#include "quenwick/logging/Logger.h"
#include "quenwick/platform/JSONSerialization.h"
#include "quenwick/platform/Text.h"

namespace quenwick {
namespace {

using platform::Dictionary;
using platform::List;
using platform::Value;

constexpr std::size_t kMaximumSize = 1U << 20;
constexpr std::size_t kLongestNamedField = 64;

/// Looks for what JSON cannot hold.
class Checker {
 public:
  /// The reason to refuse the dictionary; none where it is sound.
  static std::optional<std::string> fault(const Dictionary& dictionary) {
    Checker checker;
    return checker.isSound(dictionary) ? std::nullopt : std::optional(std::move(checker.fault_));
  }

 private:
  bool isSound(const Value& value) {
    return std::visit([this](const auto& kind) { return isSound(kind); }, value.storage());
  }

  bool isSound(std::nullptr_t) { return fits(1); }
  bool isSound(bool) { return fits(1); }
  bool isSound(std::int64_t) { return fits(1); }
  bool isSound(std::uint64_t) { return fits(1); }
  bool isSound(double number) {
    return fits(1) && (std::isfinite(number) || isFault(field("is not a finite number")));
  }
  bool isSound(const std::string& text) {
    return fits(text.size()) && (platform::isUTF8(text) || isFault(notUTF8(field_)));
  }

  bool isSound(const List& list) {
    if (!enter()) return false;
    for (const auto& element : list) {
      if (!isSound(element)) return false;
    }
    --depth_;
    return true;
  }

  bool isSound(const Dictionary& dictionary) {
    if (!enter()) return false;
    auto outer = field_;
    for (const auto& [key, value] : dictionary) {
      if (!isSound(key)) return false;
      if (key.size() <= kLongestNamedField) field_ = key;
      if (!isSound(value)) return false;
      field_ = outer;
    }
    --depth_;
    return true;
  }

  bool enter() {
    return ++depth_ <= platform::JSONSerialization::maximumDepth
               ? fits(1)
               : isFault("it is nested too deeply");
  }

  bool fits(std::size_t size) {
    size_ += size;
    return size_ <= kMaximumSize || isFault(std::string(kTooLarge));
  }

  std::string field(std::string_view what) const {
    return std::string(field_).append(" ").append(what);
  }

  /// Always false.
  bool isFault(std::string reason) {
    fault_ = std::move(reason);
    return false;
  }

  std::string_view field_ = "it";
  std::size_t depth_ = 0;
  std::size_t size_ = 0;
  std::string fault_;
};

}  // namespace

void refuseEvent(std::string_view reason) {
  Logger::error(QWLogType::behaviorEvent,
                std::string("Could not log event - ").append(reason).append("."));
}

std::string notUTF8(std::string_view field) {
  return std::string(field).append(" holds text that is not UTF-8");
}

Dictionary eventFields(std::string_view type, std::string event) {
  Dictionary dictionary;
  dictionary.set("type", type);
  dictionary.set("event", std::move(event));
  return dictionary;
}

std::optional<Dictionary> checked(Dictionary dictionary) {
  if (auto fault = Checker::fault(dictionary)) {
    refuseEvent(*fault);
    return std::nullopt;
  }
  return dictionary;
}

Value encode(Price price) {
  if (auto text = std::move(price).text()) return *std::move(text);
  return std::numeric_limits<double>::quiet_NaN();
}

}  // namespace quenwick
