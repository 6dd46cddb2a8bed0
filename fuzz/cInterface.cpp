// Selectors and their arguments, a line each, performed one after another; behind "@" with a
// callback.

#include <stdlib.h>

#include <atomic>
#include <deque>

#include "fuzz/Target.h"
#include "quenwick/platform/JSONSerialization.h"
#include "quenwick/platform/Text.h"
#include "quenwick/runtime/quenwick_c.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenwick::fuzz {
namespace {

constexpr int kLongestSession = 8;

/// A callback's context, which counts how often it was let go of.
struct Context {
  std::atomic<int> destroyed = 0;

  quenwick_callback callback() {
    return {.call = called, .context = this, .destroy = [](void* context) {
              ++static_cast<Context*>(context)->destroyed;
            }};
  }
  static void called(void* context, const char* arguments) {
    holds(static_cast<Context*>(context)->destroyed == 0, "nothing is called that was let go of");
    auto value = platform::JSONSerialization::parse(arguments);
    holds(value.as<platform::List>(), "a callback gets a list", arguments);
  }
};

void perform(const std::string& selector, const std::string& arguments, bool hasCallback) {
  // Each may be called for as long as the process lives.
  static auto& contexts = *new std::deque<Context>;
  auto& context = contexts.emplace_back();
  auto callback = context.callback();
  char* answer = nullptr;
  bool isDone = quenwick_perform(selector.c_str(), arguments.c_str(),
                                 hasCallback ? &callback : nullptr, &answer);
  holds(answer, "every call is answered", selector);
  const std::string text(answer);
  quenwick_free(answer);
  if (isDone) {
    try {
      platform::JSONSerialization::parse(text);
    } catch (const platform::JSONError&) {
      holds(false, "an answer is JSON", text);
    }
    return;
  }
  holds(!text.empty() && platform::isUTF8(text), "a refusal says why", selector);
  holds(text.size() < 2'000, "a refusal is short", text);
  holds(context.destroyed == (hasCallback ? 1 : 0), "a refused callback is let go of, once", text);
  contexts.pop_back();
}

/// State of its own, and a proxy that is not there: nothing leaves this machine.
bool setUp() {
  static tests::TemporaryDirectory home;
  for (const auto* name : {"http_proxy", "https_proxy", "all_proxy"}) {
    setenv(name, "http://127.0.0.1:9", 1);
  }
  unsetenv("no_proxy");
  unsetenv("NO_PROXY");
  const quenwick_log log{.write =
                             [](void*, int, const char* message) {
                               holds(platform::isUTF8(message), "a line of the log is a text");
                             },
                         .context = nullptr,
                         .destroy = nullptr};
  auto configuration = platform::JSONSerialization::text(
      platform::Dictionary{{"bundleIdentifier", "com.example.fuzz"},
                           {"bundleVersion", "1"},
                           {"serviceURL", "http://127.0.0.1:9"},
                           {"home", home.path().string()}});
  holds(quenwick_configure(configuration.c_str(), nullptr, &log, nullptr), "it is configured");
  return true;
}

}  // namespace
}  // namespace quenwick::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quenwick;
  [[maybe_unused]] static const bool isSetUp = fuzz::setUp();
  fuzz::Input input(data, size);
  for (int i = 0; i < fuzz::kLongestSession && !input.isEmpty(); ++i) {
    std::string selector(input.line());
    const std::string arguments(input.line());
    bool hasCallback = selector.starts_with('@');
    if (hasCallback) selector.erase(0, 1);
    fuzz::perform(selector, arguments, hasCallback);
  }
  fuzz::perform("clearHandleablePaths", "[]", false);
  return 0;
}
