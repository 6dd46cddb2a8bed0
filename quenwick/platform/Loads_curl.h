#pragma once

#include <curl/curl.h>

#include <chrono>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quenwick/platform/LoadPlaces.h"
#include "quenwick/platform/Load_curl.h"

namespace quenwick::platform {

/// The loads of the process and their connections, on curl's multi interface: each is begun, led
/// from hop to hop and ended. For the loading thread alone.
class Loads {
 public:
  Loads();

  void start(const std::shared_ptr<Load>& load, Load::End end);
  void cancel(const std::shared_ptr<Load>& load);
  /// Goes on with the request, or ends the load with the redirect as its response.
  void goOn(const std::shared_ptr<Load>& load, std::optional<URLRequest> request);
  /// Those that carry nothing.
  void closeConnections();

  /// Reads and writes what can be read and written at once, and ends what has lasted too long.
  void drive();
  /// Waits for something to read or write, for a load's time to be over, or for the descriptor; not
  /// longer than said.
  void wait(curl_waitfd& descriptor, std::chrono::milliseconds atMost) const;

 private:
  void perform();
  void takeEnded();
  void begin(const std::shared_ptr<Load>& load);
  void hopEnded(const std::shared_ptr<Load>& load, CURLcode code);
  void pause(Load& load);
  void put(const std::shared_ptr<Load>& load);
  void putAgain(const std::shared_ptr<Load>& load);
  void putWaiting(const std::string& origin);
  void abandon(Load& load);
  void end(const std::shared_ptr<Load>& load, std::shared_ptr<const PlatformError> error);
  void failTimedOut();

  struct CloseMulti {
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
  };
  using Multi = std::unique_ptr<CURLM, CloseMulti>;
  static Multi makeMulti();

  Multi multi_;
  std::list<std::shared_ptr<Load>> loads_;
  LoadPlaces places_;
  std::vector<Load::Easy> spare_;
  Load::Clock::time_point nextDeadline_ = Load::Clock::time_point::max();
  bool hasBegun_ = false;  // since the transfers were last driven
};

}  // namespace quenwick::platform
