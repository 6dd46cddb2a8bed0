#include "quenwick/platform/Application.h"

#include <utility>

#include "quenwick/platform/Replaceable.h"

namespace quenwick::platform {
namespace {

Replaceable<Application>& current() {
  static auto& instance = *new Replaceable<Application>;
  return instance;
}

}  // namespace

std::shared_ptr<Application> Application::shared() { return current().get(); }

void Application::setShared(std::shared_ptr<Application> application) {
  current().replace(std::move(application));
}

}  // namespace quenwick::platform
