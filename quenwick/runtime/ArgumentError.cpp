#include "quenwick/runtime/ArgumentError.h"

#include <array>

namespace quenwick::runtime {
namespace {

// In the order of `Value::Storage`.
constexpr std::array kKinds = {"null",     "a flag", "an integer", "an integer",
                               "a number", "a text", "a list",     "a dictionary"};
static_assert(kKinds.size() == std::variant_size_v<platform::Value::Storage>);

/// Selectors end with a colon of their own.
std::string said(const std::string& places, const std::string& fault) {
  if (places.empty()) return fault;
  return places + (places.ends_with(':') ? " " : ": ") + fault;
}

}  // namespace

ArgumentError::ArgumentError(std::string places, std::string fault)
    : Error(said(places, fault)), places_(std::move(places)), fault_(std::move(fault)) {}

ArgumentError ArgumentError::mismatch(std::string_view kind, const platform::Value& value) {
  return ArgumentError("must be " + std::string(kind) + " and is " +
                       kKinds.at(value.storage().index()));
}

ArgumentError ArgumentError::within(const std::string& place) const {
  return {places_.empty() ? place : place + ", " + places_, fault_};
}

}  // namespace quenwick::runtime
