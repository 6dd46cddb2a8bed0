#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>

#include "quenwick/runtime/Callback.h"
#include "quenwick/runtime/Kind.h"

namespace quenwick::runtime {

/// What a parameter takes: an argument of a kind, or a callback.
struct ParameterKind {
  /// Of a callback, what it is called with.
  std::string_view text;
  bool isCallback = false;
  bool isRequired = true;
};

template <class T>
struct CallbackKind : std::false_type {};
template <class Kind>
struct CallbackKind<CallbackOf<Kind>> : std::true_type {};

template <class T>
concept RequiredCallback = CallbackKind<T>::value;
template <class T>
concept OptionalCallback = CallbackKind<typename T::value_type>::value;

template <class T>
constexpr ParameterKind parameterKind() {
  if constexpr (RequiredCallback<T>) {
    return {.text = T::arguments, .isCallback = true};
  } else if constexpr (OptionalCallback<T>) {
    return {.text = T::value_type::arguments, .isCallback = true, .isRequired = false};
  } else {
    return {.text = Kind<T>::name};
  }
}

/// What a host gave, handed out one after another to the parameters.
class Arguments {
 public:
  Arguments(platform::List values, std::optional<Callback> callback)
      : values_(std::move(values)), callback_(std::move(callback)) {}

  /// Throws an `ArgumentError` unless there is just what the parameters take.
  void check(std::span<const std::string_view> names, std::span<const ParameterKind> kinds);

  /// The next one. Throws an `ArgumentError` where it is of another kind.
  template <class T>
  T take() {
    if constexpr (RequiredCallback<T>) {
      return T(*callback_);
    } else if constexpr (OptionalCallback<T>) {
      return callback_ ? T(*callback_) : T();
    } else {
      return Kind<T>::read(next());
    }
  }
  platform::Value&& next();

  /// All have been taken: faults from here on lie in none of them.
  void end() { taken_ = 0; }

  /// Throws the fault at its place: in the operation, in the argument that was taken last.
  [[noreturn]] void rethrow(const ArgumentError& error, std::string_view operation) const;

 private:
  platform::List values_;
  std::optional<Callback> callback_;
  std::span<const std::string_view> names_;
  std::size_t taken_ = 0;
};

}  // namespace quenwick::runtime
