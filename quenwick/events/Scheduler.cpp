#include "quenwick/events/Scheduler.h"

#include <algorithm>
#include <utility>

#include "quenwick/platform/MainActor.h"

namespace quenwick {
namespace {

class MainQueue : public platform::Executor {
 public:
  void post(platform::Work work) override { platform::MainActor::post(std::move(work)); }
};

class MainScheduler : public Scheduler {
 public:
  Moment now() const override { return std::chrono::steady_clock::now(); }

  platform::Cancellable postAt(Moment moment, platform::Work work) override {
    static auto& queue = *new MainQueue;
    return platform::postAfter(std::max(moment - now(), Moment::duration::zero()), queue,
                               std::move(work));
  }
};

}  // namespace

std::shared_ptr<Scheduler> Scheduler::main() {
  static const auto& instance = *new std::shared_ptr<Scheduler>(new MainScheduler);
  return instance;
}

}  // namespace quenwick
