#include "quenwick/platform/Writer.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>

#include "quenwick/platform/Seal_openssl.h"
#include "quenwick/platform/Thread.h"

namespace quenwick::platform {
namespace {

constexpr std::chrono::seconds kPatienceAtExit(1);
// What belongs together comes within this time and is written together.
constexpr std::chrono::milliseconds kLull(5);

/// Takes a task on at the first of several calls, however early that comes.
class FirstOfTwo {
 public:
  void set(Continuation<void> continuation) {
    {
      std::lock_guard lock(mutex_);
      if (!isFired_) {
        continuation_ = continuation;
        return;
      }
    }
    continuation.resume();
  }

  void fire() {
    std::optional<Continuation<void>> continuation;
    {
      std::lock_guard lock(mutex_);
      isFired_ = true;
      continuation.swap(continuation_);
    }
    if (continuation) continuation->resume();
  }

 private:
  std::mutex mutex_;
  bool isFired_ = false;
  std::optional<Continuation<void>> continuation_;
};

SerialThread& makeWriter() {
  auto& thread = *new SerialThread("quenwick-write", kLull);
  prepareSealing();  // the first to be told of the exit is told before OpenSSL is torn down
  atProcessExit([] { writer().drain(kPatienceAtExit); });
  return thread;
}

}  // namespace

SerialThread& writer() {
  static auto& instance = makeWriter();
  return instance;
}

Task<void> writerIsDone(std::stop_token stop) {
  if (writer().isIdle()) co_return;
  auto first = std::make_shared<FirstOfTwo>();
  std::stop_callback onStop(stop, [first] { first->fire(); });
  co_await suspend<void>([first](Continuation<void> continuation) {
    writer().post([first] { first->fire(); });
    writer().hurry();
    first->set(continuation);
  });
}

}  // namespace quenwick::platform
