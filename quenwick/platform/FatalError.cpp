#include "quenwick/platform/FatalError.h"

#include <cstdlib>
#include <mutex>
#include <string>
#include <utility>

#include "quenwick/platform/LogSink.h"

namespace quenwick::platform {
namespace {

struct Observer {
  std::mutex mutex;
  std::function<void(std::string_view)> observe;
};

Observer& observer() {
  static auto& instance = *new Observer;
  return instance;
}

}  // namespace

void fatalError(std::string_view message) {
  std::function<void(std::string_view)> observe;
  {
    std::lock_guard lock(observer().mutex);
    observe = observer().observe;
  }
  if (observe) observe(message);
  logSink()->write({LogLevel::error, std::string(message)});
  std::abort();
}

void observeFatalErrors(std::function<void(std::string_view)> observe) {
  std::lock_guard lock(observer().mutex);
  observer().observe = std::move(observe);
}

}  // namespace quenwick::platform
