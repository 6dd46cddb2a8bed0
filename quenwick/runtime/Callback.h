#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "quenwick/client/DeeplinkResult.h"
#include "quenwick/platform/Value.h"
#include "quenwick/runtime/HostContext.h"
#include "quenwick/runtime/quenwick_c.h"

namespace quenwick::runtime {

/// A function of the host's with what it gave along. Copies are the same callback.
class Callback {
 public:
  explicit Callback(const quenwick_callback& callback)
      : call_(callback.call), context_(HostContext::make(callback.context, callback.destroy)) {}

  /// Calls it here and now, unless it was let go of.
  void operator()(const platform::List& arguments) const;

  void release() const { context_->release(); }

 private:
  void (*call_)(void* context, const char* arguments);
  std::shared_ptr<HostContext> context_;
};

/// A callback of one kind, which `Kind::arguments` describes.
template <class Kind>
struct CallbackOf : Callback {
  explicit CallbackOf(Callback callback) : Callback(std::move(callback)) {}
  static constexpr auto arguments = Kind::arguments;
};

struct OutcomeArguments {
  static constexpr std::string_view arguments = R"([{"success": text} or {"failure": error}])";
};
struct LinkOrErrorArguments {
  static constexpr std::string_view arguments = "[text or null, error or null]";
};
struct OptionalTextArguments {
  static constexpr std::string_view arguments = "[text or null]";
};
struct TextArguments {
  static constexpr std::string_view arguments = "[text]";
};
struct NoArguments {
  static constexpr std::string_view arguments = "[]";
};

/// Gets how a link ended.
using OutcomeCallback = CallbackOf<OutcomeArguments>;
/// The same as two arguments, one of which is null.
using LinkOrErrorCallback = CallbackOf<LinkOrErrorArguments>;
using OptionalTextCallback = CallbackOf<OptionalTextArguments>;
using TextCallback = CallbackOf<TextArguments>;
using PlainCallback = CallbackOf<NoArguments>;

/// The host's callback as the facade takes it.
DeeplinkHandler handlerOf(OutcomeCallback callback);
DeeplinkCompatibilityHandler handlerOf(LinkOrErrorCallback callback);

/// None where there is no callback.
template <class Kind>
auto handlerOf(std::optional<CallbackOf<Kind>> callback)
    -> decltype(handlerOf(*std::move(callback))) {
  if (!callback) return nullptr;
  return handlerOf(*std::move(callback));
}

/// The text, or null.
platform::Value valueOf(const std::optional<std::string>& text);

}  // namespace quenwick::runtime
