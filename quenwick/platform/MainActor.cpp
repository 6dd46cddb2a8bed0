#include "quenwick/platform/MainActor.h"

#include <mutex>
#include <utility>

#include "quenwick/platform/SerialThread.h"

namespace quenwick::platform {
namespace {

struct Current {
  std::mutex mutex;
  std::shared_ptr<Executor> executor;
};

Current& current() {
  static auto& instance = *new Current;
  return instance;
}

/// The library's own: never destroyed, as its thread is never joined.
std::shared_ptr<Executor> ownThread() {
  static auto& instance = *new SerialThread("quenwick-main");
  return {std::shared_ptr<void>(), &instance};
}

}  // namespace

void MainActor::setExecutor(std::shared_ptr<Executor> executor) {
  std::lock_guard lock(current().mutex);
  std::swap(current().executor, executor);
}

void MainActor::post(Work work) {
  std::shared_ptr<Executor> executor;
  {
    std::lock_guard lock(current().mutex);
    executor = current().executor;
  }
  if (!executor) executor = ownThread();
  executor->post(std::move(work));
}

}  // namespace quenwick::platform
