#pragma once

#include <functional>
#include <utility>

#include "quenwick/client/HostCalls.h"
#include "quenwick/platform/Executor.h"

namespace quenwick {

/// The main actor's executor as a host gives it.
class HostExecutor : public platform::Executor {
 public:
  using Post = std::function<void(std::function<void()> work)>;

  explicit HostExecutor(Post post) : post_(std::move(post)) {}

  void post(platform::Work work) override {
    HostCalls::shared().run([&] { post_([work = std::move(work)] { platform::runWork(work); }); });
  }

 private:
  Post post_;
};

}  // namespace quenwick
