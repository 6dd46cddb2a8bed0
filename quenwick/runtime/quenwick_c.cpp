#include "quenwick/runtime/quenwick_c.h"

#include <cstdlib>
#include <cstring>

#include "quenwick/client/Deadline.h"
#include "quenwick/client/Lifecycle.h"
#include "quenwick/client/QWClient.h"
#include "quenwick/client/Version.h"
#include "quenwick/platform/JSONSerialization.h"
#include "quenwick/platform/Text.h"
#include "quenwick/runtime/Handles.h"
#include "quenwick/runtime/RuntimeConfiguration.h"
#include "quenwick/runtime/Selectors.h"

namespace quenwick::runtime {
namespace {

using platform::JSONSerialization;

/// The text for the host, to be freed by `quenwick_free`; null where there is no memory.
char* handedOut(const std::string& text) {
  auto* copy = static_cast<char*>(std::malloc(text.size() + 1));
  if (copy) std::memcpy(copy, text.c_str(), text.size() + 1);
  return copy;
}

/// Runs the work, which yields a text; what escapes it is a text too. Whether nothing has.
template <class Work>
bool guarded(char** text, const Work& work) noexcept {
  if (text) *text = nullptr;
  try {
    try {
      auto yielded = work();
      if (text) *text = handedOut(yielded);
      return true;
    } catch (const std::exception& error) {
      if (text) *text = handedOut(platform::madeUTF8(error.what()));
    }
  } catch (...) {
    // No text can be made of it.
    if (text) *text = nullptr;
  }
  return false;
}

/// The texts that a null pointer stands for are none.
std::string_view given(const char* text, std::string_view name) {
  if (!text) throw ArgumentError(std::string(name) + " is a null pointer");
  return text;
}

std::optional<Callback> callbackFrom(const quenwick_callback* callback) {
  if (!callback) return std::nullopt;
  Callback taken(*callback);
  if (!callback->call) throw ArgumentError("the callback has no function");
  return taken;
}

const Selector& selectorGiven(std::string_view name) {
  const auto* found = selectorNamed(name);
  if (!found) throw ArgumentError("there is no selector " + platform::shown(name));
  return *found;
}

platform::List listFrom(const Selector& selector, std::string_view json) {
  return at([&] { return std::string(selector.name); },
            [&] {
              platform::Value value;
              try {
                value = JSONSerialization::parse(json);
              } catch (const platform::JSONError& error) {
                throw ArgumentError(error.localizedDescription());
              }
              auto* list = value.as<platform::List>();
              if (!list) throw ArgumentError::mismatch("a list of arguments", value);
              return std::move(*list);
            });
}

void refuseAfterShutdown() {
  if (Lifecycle::shared().stopToken().stop_requested()) {
    throw ArgumentError("the library was shut down");
  }
}

std::string performed(const char* name, const char* arguments, const quenwick_callback* callback) {
  auto taken = callbackFrom(callback);
  const auto& selector = selectorGiven(given(name, "the selector"));
  auto values = listFrom(selector, given(arguments, "the text of the arguments"));
  refuseAfterShutdown();
  return JSONSerialization::text(selector.perform(std::move(values), std::move(taken)));
}

std::string configured(const char* json, const quenwick_executor* executor,
                       const quenwick_log* log) {
  // Taken first: what is refused is let go of too.
  HostFunctions functions(executor, log);
  auto configuration = configurationFrom(json);
  refuseAfterShutdown();
  configuration.mainExecutor = std::move(functions.mainExecutor);
  configuration.logHook = std::move(functions.logHook);
  if (auto fault = Lifecycle::shared().configure(std::move(configuration))) {
    throw ArgumentError(*fault);
  }
  return {};
}

bool shutDown(std::chrono::milliseconds atMost) {
  Deadline deadline(atMost);
  bool hasEnded = QWClient::shutdown(atMost);
  Handles::shared().cancelAll();
  return HostContext::closeAll(deadline.left()) && hasEnded;
}

}  // namespace
}  // namespace quenwick::runtime

using namespace quenwick::runtime;

const char* quenwick_version(void) {
  return quenwick::version().data();  // which ends with a zero byte
}

void quenwick_free(char* text) { std::free(text); }

bool quenwick_configure(const char* configuration, const quenwick_executor* executor,
                        const quenwick_log* log, char** error) {
  char* text = nullptr;
  bool isDone = guarded(&text, [&] { return configured(configuration, executor, log); });
  if (isDone || !error) quenwick_free(std::exchange(text, nullptr));
  if (error) *error = text;
  return isDone;
}

bool quenwick_perform(const char* selector, const char* arguments,
                      const quenwick_callback* callback, char** answer) {
  return guarded(answer, [&] { return performed(selector, arguments, callback); });
}

char* quenwick_selectors(void) {
  char* text = nullptr;
  guarded(&text, [] { return JSONSerialization::text(description()); });
  return text;
}

bool quenwick_flush(uint32_t milliseconds) {
  bool isDone = false;
  guarded(nullptr, [&] {
    isDone = quenwick::QWClient::flush(std::chrono::milliseconds(milliseconds));
    return std::string();
  });
  return isDone;
}

bool quenwick_shutdown(uint32_t milliseconds) {
  bool isDone = false;
  guarded(nullptr, [&] {
    isDone = shutDown(std::chrono::milliseconds(milliseconds));
    return std::string();
  });
  return isDone;
}
