#pragma once

#include <concepts>
#include <cstddef>
#include <functional>
#include <ranges>

namespace quenwick {

template <class T>
concept StandardHashable = requires(const T& value) {
  { std::hash<T>()(value) } -> std::convertible_to<std::size_t>;
};

/// The value's hash: the standard one, or for lists, maps and pairs, which have none, one made of
/// their elements. Equal values hash alike, those of unordered containers too.
template <class T>
std::size_t hashOf(const T& value) {
  constexpr std::size_t kSpread = 0x9e3779b97f4a7c15;
  if constexpr (StandardHashable<T>) {
    return std::hash<T>()(value);
  } else if constexpr (requires { value.first, value.second; }) {
    return hashOf(value.first) * kSpread ^ hashOf(value.second);
  } else {
    static_assert(std::ranges::range<T>, "a type without a hash");
    std::size_t hash = std::ranges::size(value);
    for (const auto& element : value) {
      // Equal unordered containers may have their elements in different orders.
      constexpr bool kIsOrdered = !requires { typename T::hasher; };
      hash = (kIsOrdered ? hash * kSpread : hash) + hashOf(element) * kSpread;
    }
    return hash;
  }
}

}  // namespace quenwick
