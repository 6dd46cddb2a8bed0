#pragma once

#include <curl/curl.h>

#include <atomic>
#include <chrono>
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

#include "quenwick/platform/EasyHandle_curl.h"
#include "quenwick/platform/URLSession.h"
#include "quenwick/platform/WakeUp.h"

namespace quenwick::platform {

class TrustStore;

/// One load from its first request to its end, over all redirects. Lives on the loading thread;
/// what it tells others it tells through its callbacks, there.
class Load : public std::enable_shared_from_this<Load> {
 public:
  using Clock = std::chrono::steady_clock;

  /// Asked at each redirect; the answer goes to `URLLoader::answerRedirect`.
  using AskRedirect =
      std::function<void(const std::shared_ptr<Load>&, HTTPURLResponse, URLRequest)>;
  /// Called once, at the end: with the outcome, or with the error in its place.
  using End = std::function<void(DataResponse, std::shared_ptr<const PlatformError>)>;

  Load(std::shared_ptr<const URLRequest> request,
       std::shared_ptr<const URLSessionConfiguration> configuration,
       std::shared_ptr<TrustStore> trust, AskRedirect askRedirect);

 private:
  friend class URLLoader;

  struct FreeList {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
  };
  using TextList = std::unique_ptr<curl_slist, FreeList>;

  /// A handle of curl's, and what is set on it, which a load alike need not set again.
  struct Handle {
    std::shared_ptr<const URLSessionConfiguration> configuration;
    TextList connectTo;
    HeaderFields requested;  // of the request that the fields were made for
    bool isBare = false;     // without credentials of the session
    bool asksCaches = false;
    bool hasBody = false;
    TextList headers;
    EasyHandle easy;
    bool isUsed = false;
    std::string multiplexed;  // the origin that it last spoke HTTP/2 with
  };
  using Easy = std::unique_ptr<Handle>;

  static Easy makeEasy();
  void setUp(Easy handle);
  Easy takeDown();
  CURL* easy() const { return handle_->easy.get(); }
  void setNext(URLRequest request);
  void setRequest();
  void prepareHandle();
  void takeAnotherHandle();
  bool asksCaches() const;
  void setMethod();
  void setHeaders();
  HeaderFields allFields() const;
  void setConfiguration();
  void setTrust();
  bool receiveHeader(std::string_view line);
  bool receiveBody(std::string_view bytes);
  bool isToBeSent();
  std::optional<URLRequest> redirect();
  std::shared_ptr<const PlatformError> errorFrom(CURLcode code) const;
  Clock::time_point deadline() const;

  static std::size_t onHeader(char* bytes, std::size_t one, std::size_t count, void* load);
  static std::size_t onBody(char* bytes, std::size_t one, std::size_t count, void* load);
  static curl_socket_t onOpen(void* load, curlsocktype purpose, curl_sockaddr* address);
  static int onSend(void* load, char* address, char* ownAddress, int port, int ownPort);
  static CURLcode onTrust(CURL* easy, void* context, void* load);

  std::shared_ptr<const URLRequest> request_;  // of the hop that loads
  const std::shared_ptr<const URLSessionConfiguration> configuration_;
  const std::shared_ptr<TrustStore> trust_;
  const AskRedirect askRedirect_;
  End end_;

  Easy handle_;
  std::shared_ptr<HTTPURLResponse> response_;
  bool isAway_ = false;          // a redirect led to another server
  bool isSet_ = false;           // method and headers are with the handle
  bool isOnlyForHTTP2_ = false;  // the handle as it is, and only on a kept connection
  bool isHandleUnfit_ = false;   // there was none
  bool isHeadComplete_ = false;
  bool isSent_ = false;
  bool isConnectionLost_ = false;
  Bytes body_;
  bool isBodyTooLong_ = false;
  bool isLoading_ = false;
  std::list<std::shared_ptr<Load>>::iterator place_;  // among the loader's
  std::string origin_;                                // that it loads from, or waits for
  bool isEnded_ = false;
  int redirects_ = 0;
  Clock::time_point started_;
  Clock::time_point lastProgress_;
  std::atomic<bool> isCancelled_ = false;
};

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
