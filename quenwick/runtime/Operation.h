#pragma once

#include <concepts>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "quenwick/runtime/Callback.h"
#include "quenwick/runtime/Kind.h"

namespace quenwick::runtime {

/// What an operation takes: an argument of a kind, or a callback.
struct Parameter {
  std::string name;
  /// Of a callback, what it is called with.
  std::string kind;
  bool isCallback = false;
  bool isRequired = true;
};

template <class T>
struct CallbackKind : std::false_type {};
template <class Kind>
struct CallbackKind<CallbackOf<Kind>> : std::true_type {};

template <class T>
Parameter parameter(const std::string& name) {
  if constexpr (CallbackKind<T>::value) {
    return {.name = name, .kind = T::arguments(), .isCallback = true};
  } else {
    return {.name = name, .kind = Kind<T>::name()};
  }
}
template <class T>
  requires CallbackKind<typename T::value_type>::value
Parameter parameter(const std::string& name) {
  auto required = parameter<typename T::value_type>(name);
  required.isRequired = false;
  return required;
}

/// What a host gave, handed out one after another to the parameters.
class Arguments {
 public:
  Arguments(platform::List values, std::optional<Callback> callback)
      : values_(std::move(values)), callback_(std::move(callback)) {}

  /// Throws an `ArgumentError` unless there is just what the parameters take.
  void check(const std::vector<Parameter>& parameters) const;

  template <class T>
  T take(const Parameter& parameter) {
    if constexpr (CallbackKind<T>::value) {
      return T(*callback_);
    } else if constexpr (requires { requires CallbackKind<typename T::value_type>::value; }) {
      return callback_ ? T(*callback_) : T();
    } else {
      auto& value = values_[taken_++];
      return at([&] { return "argument " + std::to_string(taken_) + " (" + parameter.name + ")"; },
                [&] { return Kind<T>::read(std::move(value)); });
    }
  }

 private:
  platform::List values_;
  std::optional<Callback> callback_;
  std::size_t taken_ = 0;
};

/// A function that is known by its name, and what it takes. It yields an `Out`.
template <class Out>
struct Operation {
  std::string name;
  std::vector<Parameter> parameters;
  /// What the function itself yields; empty for nothing.
  std::string result;
  Out (*run)(Arguments& arguments, const std::vector<Parameter>& parameters);

  /// Throws an `ArgumentError`.
  Out perform(platform::List values, std::optional<Callback> callback = {}) const {
    return at([&] { return name; },
              [&] {
                Arguments arguments(std::move(values), std::move(callback));
                arguments.check(parameters);
                return run(arguments, parameters);
              });
  }
};

template <class Out>
const Operation<Out>* find(const std::vector<Operation<Out>>& operations, std::string_view name) {
  for (const auto& operation : operations) {
    if (operation.name == name) return &operation;
  }
  return nullptr;
}

/// The result of a function as a value, and what it is called.
template <class T>
struct ResultKind {
  static std::string name() { return Kind<T>::name(); }
};

template <class Out, class Function, class Member = decltype(&Function::operator())>
struct Signature;

template <class Out, class Function, class Result, class... Taken>
struct Signature<Out, Function, Result (Function::*)(Taken...) const> {
  static constexpr auto count = sizeof...(Taken);

  static Operation<Out> operation(const std::string& name, const std::vector<std::string>& names) {
    std::size_t next = 0;
    return {.name = name,
            .parameters = {parameter<std::remove_cvref_t<Taken>>(names[next++])...},
            .result = resultName(),
            .run = run};
  }

 private:
  static std::string resultName() {
    if constexpr (std::is_void_v<Result>) {
      return {};
    } else {
      return ResultKind<Result>::name();
    }
  }

  static Out run(Arguments& arguments, const std::vector<Parameter>& parameters) {
    std::size_t next = 0;
    // Braces take them from left to right.
    std::tuple<std::remove_cvref_t<Taken>...> taken{
        arguments.take<std::remove_cvref_t<Taken>>(parameters[next++])...};
    if constexpr (std::is_void_v<Result>) {
      std::apply(Function(), std::move(taken));
      return Out();
    } else if constexpr (std::same_as<Out, Result>) {
      return std::apply(Function(), std::move(taken));
    } else {
      return ResultKind<Result>::value(std::apply(Function(), std::move(taken)));
    }
  }
};

/// The function, which captures nothing, under that name. Its parameters tell the kinds of the
/// arguments; `names` are theirs.
template <class Out, class Function, class... Names>
Operation<Out> operation(const std::string& name, Function, const Names&... names) {
  static_assert(sizeof...(Names) == Signature<Out, Function>::count);
  return Signature<Out, Function>::operation(name, {std::string(names)...});
}

}  // namespace quenwick::runtime
