#pragma once

#include <algorithm>
#include <array>
#include <concepts>
#include <initializer_list>
#include <optional>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>

#include "quenwick/runtime/Arguments.h"

namespace quenwick::runtime {

/// The result of a function as a value, and what it is called.
template <class T>
struct ResultKind {
  static constexpr auto name = Kind<T>::name;
};

template <>
struct ResultKind<void> {
  static constexpr std::string_view name;
};

/// What a function takes, and what it yields: its kinds.
struct Shape {
  std::span<const ParameterKind> parameters;
  /// Empty for nothing.
  std::string_view result;
};

template <class Result, class... Taken>
struct ShapeOf {
  static constexpr std::array<ParameterKind, sizeof...(Taken)> parameters{
      parameterKind<Taken>()...};
  static constexpr Shape shape{.parameters = parameters, .result = ResultKind<Result>::name};
};

/// A function that reads its own arguments and yields an `Out`.
template <class Out>
struct Action {
  const Shape* shape;
  Out (*run)(Arguments& arguments);
};

/// A function that is known by its name, and its parameters by theirs. Tables of them are data:
/// they are made while compiling.
template <class Out>
struct Operation {
  std::string_view name;
  std::initializer_list<std::string_view> parameters;
  Action<Out> action;

  /// Throws an `ArgumentError`.
  Out perform(platform::List values, std::optional<Callback> callback = {}) const {
    Arguments arguments(std::move(values), std::move(callback));
    try {
      arguments.check({parameters.begin(), parameters.size()}, action.shape->parameters);
      return action.run(arguments);
    } catch (const ArgumentError& error) {
      arguments.rethrow(error, name);
    }
  }
};

/// Whether each has as many names of parameters as its function has parameters.
constexpr bool areNamed(const auto& operations) {
  return std::ranges::all_of(operations, [](const auto& each) {
    return each.parameters.size() == each.action.shape->parameters.size();
  });
}

template <class Out>
const Operation<Out>* find(std::span<const Operation<Out>> operations, std::string_view name) {
  auto found = std::ranges::find(operations, name, &Operation<Out>::name);
  return found == operations.end() ? nullptr : &*found;
}

template <class Out, class Function, class Member = decltype(&Function::operator())>
struct Calling;

template <class Out, class Function, class Result, class... Taken>
struct Calling<Out, Function, Result (Function::*)(Taken...) const> {
  static Out run(Arguments& all) {
    // Braces read them from left to right.
    return Call{all, all.take<std::remove_cvref_t<Taken>>()...}.yielded;
  }

 private:
  struct Call {
    Out yielded;

    Call(Arguments& all, std::remove_cvref_t<Taken>&&... taken)
        : yielded((all.end(), called(std::move(taken)...))) {}
  };

  static Out called(std::remove_cvref_t<Taken>&&... taken) {
    if constexpr (std::is_void_v<Result>) {
      Function()(std::move(taken)...);
      return Out();
    } else if constexpr (std::same_as<Out, Result>) {
      return Function()(std::move(taken)...);
    } else {
      return ResultKind<Result>::value(Function()(std::move(taken)...));
    }
  }

 public:
  static constexpr Action<Out> action{
      .shape = &ShapeOf<Result, std::remove_cvref_t<Taken>...>::shape, .run = run};
};

/// The action of a function that captures nothing, whose parameters tell the kinds of its
/// arguments.
template <class Out, class Function>
constexpr Action<Out> actionOf(Function) {
  return Calling<Out, Function>::action;
}

}  // namespace quenwick::runtime
