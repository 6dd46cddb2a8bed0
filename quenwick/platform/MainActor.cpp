#include "quenwick/platform/MainActor.h"

#include <utility>

#include "quenwick/platform/Replaceable.h"
#include "quenwick/platform/SerialThread.h"

namespace quenwick::platform {
namespace {

Replaceable<Executor>& current() {
  static auto& instance = *new Replaceable<Executor>;
  return instance;
}

Replaceable<Executor>& toolkits() {
  static auto& instance = *new Replaceable<Executor>;
  return instance;
}

/// The library's own: never destroyed, as its thread is never joined.
std::shared_ptr<Executor> ownThread() {
  static auto& instance = *new SerialThread("quenwick-main");
  return {std::shared_ptr<void>(), &instance};
}

}  // namespace

void MainActor::setExecutor(std::shared_ptr<Executor> executor) {
  current().replace(std::move(executor));
}

void MainActor::setToolkitExecutor(std::shared_ptr<Executor> executor) {
  toolkits().replace(std::move(executor));
}

void MainActor::post(Work work) {
  auto executor = current().get();
  if (!executor) executor = toolkits().get();
  if (!executor) executor = ownThread();
  executor->post(std::move(work));
}

}  // namespace quenwick::platform
