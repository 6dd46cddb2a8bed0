#pragma once

#include <curl/curl.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "quenwick/platform/EasyHandle_curl.h"
#include "quenwick/platform/URLSession.h"

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

  /// From any thread: it does not begin any more.
  void cancel() { isCancelled_ = true; }

 private:
  friend class Loads;

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
  bool doesSomething() const;
  bool isToBeSent();
  bool isToBeSentAgain(CURLcode code);
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
  bool isSentAgain_ = false;
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

}  // namespace quenwick::platform
