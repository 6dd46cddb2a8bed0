#pragma once

#include <atomic>
#include <deque>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "quenwick/platform/Load_curl.h"
#include "quenwick/platform/WakeUp.h"

namespace quenwick::platform {

/// The one loading thread of the process, and its connections.
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
  /// Where loads go. One whose connections carry one load each has no more loads than connections:
  /// what curl itself keeps waiting for a connection, it may forget.
  struct Origin {
    std::size_t loading = 0;
    bool isMultiplexed = false;
    std::deque<std::shared_ptr<Load>> waiting;
  };

  URLLoader();
  void wake();
  void run();
  void drive();
  void runCommands();
  void takeEnded();
  void begin(const std::shared_ptr<Load>& load);
  void goOn(const std::shared_ptr<Load>& load, std::optional<URLRequest> request);
  void hopEnded(const std::shared_ptr<Load>& load, CURLcode code);
  void pause(Load& load);
  void put(const std::shared_ptr<Load>& load);
  void putAgain(const std::shared_ptr<Load>& load);
  void putWaiting(const std::string& origin);
  void abandon(Load& load);
  void end(const std::shared_ptr<Load>& load, std::shared_ptr<const PlatformError> error);
  void failTimedOut();
  void stop();
  int pollMilliseconds() const;

  void sleep();

  const WakeUp wakeUp_;
  std::shared_ptr<CURLM> multi_;
  std::list<std::shared_ptr<Load>> loads_;
  std::map<std::string, Origin> origins_;  // those with loads
  std::vector<Load::Easy> spare_;
  Load::Clock::time_point nextDeadline_ = Load::Clock::time_point::max();
  std::thread thread_;
  std::atomic<std::thread::id> threadID_;
  bool hasBegun_ = false;  // since the transfers were last driven
  bool isStopping_ = false;
  bool isStopped_ = false;  // before it began: the process exits

  std::mutex mutex_;
  std::vector<Command> commands_;
};

}  // namespace quenwick::platform
