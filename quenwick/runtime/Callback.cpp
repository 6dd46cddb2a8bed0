#include "quenwick/runtime/Callback.h"

#include "quenwick/platform/JSONSerialization.h"
#include "quenwick/platform/Text.h"

namespace quenwick::runtime {
namespace {

using platform::Dictionary;
using platform::Value;

Value valueOf(const platform::PlatformError& error) {
  Dictionary userInfo;
  for (const auto& [key, text] : error.userInfo()) userInfo.set(key, platform::madeUTF8(text));
  return Dictionary{{"domain", error.domain()},
                    {"code", error.code()},
                    {"description", platform::madeUTF8(error.localizedDescription())},
                    {"userInfo", std::move(userInfo)}};
}

Value valueOf(const DeeplinkResult& result) {
  if (const auto* link = std::get_if<std::string>(&result)) {
    return Dictionary{{"success", platform::madeUTF8(*link)}};
  }
  return Dictionary{{"failure", valueOf(std::get<DeeplinkResolutionError>(result).nsError())}};
}

}  // namespace

void Callback::operator()(const platform::List& arguments) const {
  auto text = platform::JSONSerialization::text(arguments);
  context_->use([&](void* context) { call_(context, text.c_str()); });
}

DeeplinkHandler handlerOf(OutcomeCallback callback) {
  return [callback = std::move(callback)](const DeeplinkResult& result) {
    callback({valueOf(result)});
  };
}

DeeplinkCompatibilityHandler handlerOf(LinkOrErrorCallback callback) {
  return [callback = std::move(callback)](const auto& link, const auto& error) {
    callback({valueOf(link), error ? valueOf(*error) : Value()});
  };
}

platform::Value valueOf(const std::optional<std::string>& text) {
  return text ? Value(platform::madeUTF8(*text)) : Value();
}

}  // namespace quenwick::runtime
