#pragma once

#include <initializer_list>

namespace quenwick::inline v0 {

/// A set of log categories.
class QWLogType {
 public:
  constexpr QWLogType() = default;
  constexpr explicit QWLogType(int rawValue) : rawValue_(rawValue) {}
  constexpr QWLogType(std::initializer_list<QWLogType> members) {
    for (auto member : members) insert(member);
  }

  constexpr int rawValue() const { return rawValue_; }

  constexpr void insert(QWLogType members) { rawValue_ |= members.rawValue_; }
  constexpr void remove(QWLogType members) { rawValue_ &= ~members.rawValue_; }

  /// Whether every member of `members` is in this set; always so for `none`.
  constexpr bool contains(QWLogType members) const { return (members.rawValue_ & ~rawValue_) == 0; }
  constexpr bool isSubsetOf(QWLogType other) const { return other.contains(*this); }

  friend constexpr bool operator==(QWLogType, QWLogType) = default;

  /// No category. A message of this category is always written.
  static const QWLogType none;
  /// Deep-link handling and resolution.
  static const QWLogType deeplink;
  /// Behaviour verification and behaviour events.
  static const QWLogType behaviorEvent;
  /// Both.
  static const QWLogType all;

 private:
  int rawValue_ = 0;
};

inline constexpr QWLogType QWLogType::none(0);
inline constexpr QWLogType QWLogType::deeplink(1);
inline constexpr QWLogType QWLogType::behaviorEvent(2);
inline constexpr QWLogType QWLogType::all{QWLogType::deeplink, QWLogType::behaviorEvent};

}  // namespace quenwick::inline v0
