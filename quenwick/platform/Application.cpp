#include "quenwick/platform/Application.h"

#include <mutex>
#include <utility>

namespace quenwick::platform {
namespace {

struct Current {
  std::mutex mutex;
  std::shared_ptr<Application> application;
};

Current& current() {
  static auto& instance = *new Current;
  return instance;
}

}  // namespace

std::shared_ptr<Application> Application::shared() {
  std::lock_guard lock(current().mutex);
  return current().application;
}

void Application::setShared(std::shared_ptr<Application> application) {
  std::lock_guard lock(current().mutex);
  std::swap(current().application, application);
}

}  // namespace quenwick::platform
