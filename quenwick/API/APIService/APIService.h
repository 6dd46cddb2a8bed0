#pragma once

#include <memory>
#include <mutex>
#include <utility>

#include "quenwick/API/Requesters/BehavioralEventRequester.h"
#include "quenwick/API/Requesters/BehavioralVerificationRequester.h"
#include "quenwick/API/Stack/APISource.h"

namespace quenwick {

/// Where the requesters of the service's APIs are found. From any thread.
class APIService {
 public:
  /// Which server an API lies with.
  class Host {
   public:
    static Host production();
    static Host custom(platform::URL url) { return Host(std::move(url)); }

    const platform::URL& url() const { return url_; }

   private:
    explicit Host(platform::URL url) : url_(std::move(url)) {}
    platform::URL url_;
  };

  /// The API of the handshake.
  class BehaviorVerificationSource : public APISource {
   public:
    BehaviorVerificationSource(const Host& host, platform::URLSessionConfiguration basis);

    const platform::URL& url() const override { return requester_->baseURL(); }
    const std::shared_ptr<BehavioralVerificationRequester>& requester() const { return requester_; }

   private:
    std::shared_ptr<BehavioralVerificationRequester> requester_;
  };

  /// The API of events; its host is the endpoint that the handshake named.
  class BehavioralEventSource : public APISource {
   public:
    BehavioralEventSource(const Host& host, platform::URLSessionConfiguration basis);

    const platform::URL& url() const override { return requester_->baseURL(); }
    const std::shared_ptr<BehavioralEventRequester>& requester() const { return requester_; }

   private:
    std::shared_ptr<BehavioralEventRequester> requester_;
  };

  /// The process's own; made for the production host on first use.
  static std::shared_ptr<APIService> shared();

  /// Replaces it; what runs goes on with the one that it has. Null brings back the default.
  static void setShared(std::shared_ptr<APIService> service);

  /// `basis` is what holds for every session beside time-outs and caching, such as trust.
  explicit APIService(Host host = Host::production(), platform::URLSessionConfiguration basis = {});

  /// Made on first use and kept.
  std::shared_ptr<BehaviorVerificationSource> behavioralVerification();

  /// A new one for each call.
  std::shared_ptr<BehavioralEventSource> behavioralEvent(const Host& host) const;

 private:
  Host host_;
  platform::URLSessionConfiguration basis_;
  std::once_flag isVerificationMade_;
  std::shared_ptr<BehaviorVerificationSource> verification_;
};

}  // namespace quenwick
