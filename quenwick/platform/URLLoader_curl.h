#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "quenwick/platform/Load_curl.h"
#include "quenwick/platform/WakeUp.h"

namespace quenwick::platform {

class Loads;

/// The one loading thread of the process, and what other threads ask of it.
class URLLoader {
 public:
  static URLLoader& shared();

  void start(std::shared_ptr<Load> load, Load::End end);
  void cancel(std::shared_ptr<Load> load);
  /// Goes on with the request, or ends the load with the redirect as its response.
  void answerRedirect(std::shared_ptr<Load> load, std::optional<URLRequest> request);
  void closeIdleConnections();

  /// From `hold` until `letGo`, what this thread hands over does not wake the loading thread.
  static void hold();
  static void letGo();

  /// Runs on the loading thread; never, once the process exits.
  using Command = std::function<void()>;
  void post(Command command);

 private:
  URLLoader();
  void run();
  void runCommands();
  void sleep();
  void wake();
  void stop();

  const WakeUp wakeUp_;
  std::unique_ptr<Loads> loads_;
  std::thread thread_;
  std::atomic<std::thread::id> threadID_;
  std::atomic<bool> isWoken_ = false;
  bool isStopping_ = false;
  bool isStopped_ = false;  // before it began: the process exits

  std::mutex mutex_;
  std::vector<Command> commands_;
};

}  // namespace quenwick::platform
