#include "quenwick/platform/Loads_curl.h"

#include <algorithm>
#include <utility>

#include "quenwick/platform/Descriptors_curl.h"
#include "quenwick/platform/OpenSockets_curl.h"
#include "quenwick/platform/PostsTogether.h"
#include "quenwick/platform/Text.h"
#include "quenwick/platform/URLError_curl.h"
#include "quenwick/platform/UTF8Locale.h"

namespace quenwick::platform {
namespace {

constexpr std::size_t kSpareHandles = 64;
/// Of all origins together. Left to itself, curl keeps four for each load that there is, and lets
/// go of most when one load ends alone.
constexpr long kKeptConnections = 64;
/// How many loads there are when what they send is held to be written together.
constexpr std::size_t kWorthHolding = 4;

bool isMethod(std::string_view text) {
  return !text.empty() && std::ranges::all_of(text, [](char c) { return c > ' ' && c < 0x7f; });
}

/// Why the request cannot be loaded at all, or 0.
int refusal(const URLRequest& request) {
  if (!request.url || !isMethod(request.httpMethod.value_or("GET"))) return URLErrorCode::badURL;
  auto scheme = lowercased(request.url->scheme());
  if (scheme != "http" && scheme != "https") return URLErrorCode::unsupportedURL;
  return request.url->host() ? 0 : URLErrorCode::badURL;
}

}  // namespace

Loads::Loads() : multi_(makeMulti()) {}

Loads::Multi Loads::makeMulti() {
  Multi multi(makeCloseOnExecMulti());
  curl_multi_setopt(multi.get(), CURLMOPT_MAX_HOST_CONNECTIONS,
                    static_cast<long>(LoadPlaces::kConnections));
  curl_multi_setopt(multi.get(), CURLMOPT_MAXCONNECTS, kKeptConnections);
  return multi;
}

void Loads::start(const std::shared_ptr<Load>& load, Load::End end) {
  load->end_ = std::move(end);
  load->started_ = Load::Clock::now();
  load->place_ = loads_.insert(loads_.end(), load);
  begin(load);
}

void Loads::cancel(const std::shared_ptr<Load>& load) {
  if (std::ranges::find(loads_, load) == loads_.end()) return;  // not begun, or ended
  end(load, urlError(URLErrorCode::cancelled, ""));
}

void Loads::goOn(const std::shared_ptr<Load>& load, std::optional<URLRequest> request) {
  if (load->isEnded_) return;
  if (!request) return end(load, nullptr);
  load->setNext(*std::move(request));
  begin(load);
}

void Loads::closeConnections() {
  spare_.clear();
  if (loads_.empty()) multi_ = makeMulti();
}

/// Loads that begin together are written together. They are driven a second time, as curl may
/// forget to look again at a transfer whose answer another one of the connection has read.
void Loads::drive() {
  bool isInCompany = hasBegun_ && loads_.size() >= kWorthHolding;
  if (isInCompany) OpenSockets::shared().hold();
  for (bool goesOn = true; goesOn;) {
    bool hadBegun = std::exchange(hasBegun_, false);
    perform();
    takeEnded();
    goesOn = hasBegun_ || (hadBegun && loads_.size() > 1);
  }
  if (isInCompany) OpenSockets::shared().letGo();
  failTimedOut();
}

/// International names of hosts are read in the locale.
void Loads::perform() {
  UTF8Locale utf8;
  int running = 0;
  curl_multi_perform(multi_.get(), &running);
}

void Loads::wait(curl_waitfd& descriptor, std::chrono::milliseconds atMost) const {
  if (nextDeadline_ != Load::Clock::time_point::max()) {
    auto left = std::chrono::ceil<std::chrono::milliseconds>(nextDeadline_ - Load::Clock::now());
    atMost = std::clamp(left, std::chrono::milliseconds(0), atMost);
  }
  curl_multi_poll(multi_.get(), &descriptor, descriptor.fd >= 0 ? 1 : 0,
                  static_cast<int>(atMost.count()), nullptr);
}

void Loads::takeEnded() {
  PostsTogether together;
  int left = 0;
  while (auto* message = curl_multi_info_read(multi_.get(), &left)) {
    if (message->msg != CURLMSG_DONE) continue;
    auto code = message->data.result;
    char* ended = nullptr;
    curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &ended);
    hopEnded(reinterpret_cast<Load*>(ended)->shared_from_this(), code);
  }
}

/// Loads the request that the load now has.
void Loads::begin(const std::shared_ptr<Load>& load) {
  const auto& url = load->request_->url;
  if (int code = load->isCancelled_ ? URLErrorCode::cancelled : refusal(*load->request_)) {
    bool isNamed = url && code != URLErrorCode::cancelled;
    return end(load, urlError(code, isNamed ? url->absoluteString() : ""));
  }
  if (!load->handle_) {
    auto handle = spare_.empty() ? Load::makeEasy() : std::move(spare_.back());
    if (!spare_.empty()) spare_.pop_back();
    load->setUp(std::move(handle));
  }
  load->origin_ = url->origin();
  load->setRequest();
  nextDeadline_ = std::min(nextDeadline_, load->deadline());
  places_.wait(load->origin_, load);
  putWaiting(load->origin_);
}

void Loads::put(const std::shared_ptr<Load>& load) {
  load->isLoading_ = true;
  curl_multi_add_handle(multi_.get(), load->easy());
  hasBegun_ = true;
}

/// Nothing went wrong but that the handle fits no connection that there is, or that the kept one
/// ended.
void Loads::putAgain(const std::shared_ptr<Load>& load) {
  pause(*load);
  load->takeAnotherHandle();
  places_.waitFirst(load->origin_, load);
  putWaiting(load->origin_);
}

/// Puts those on the wire for which there is room.
void Loads::putWaiting(const std::string& origin) {
  while (auto load = places_.takeNext(origin)) put(load);
}

/// A request of the load was answered, or failed.
void Loads::hopEnded(const std::shared_ptr<Load>& load, CURLcode code) {
  if (load->isHandleUnfit_ || load->isToBeSentAgain(code)) return putAgain(load);
  long version = CURL_HTTP_VERSION_NONE;
  curl_easy_getinfo(load->easy(), CURLINFO_HTTP_VERSION, &version);
  if (version >= CURL_HTTP_VERSION_2_0) {
    places_.setMultiplexed(load->origin_);
    if (load->handle_->multiplexed != load->origin_) load->handle_->multiplexed = load->origin_;
  }
  auto next = load->redirect();
  auto error = code == CURLE_OK ? nullptr : load->errorFrom(code);
  pause(*load);
  // What became of a redirect's own body does not matter: its head says where to go.
  if (!next) return end(load, error);
  if (++load->redirects_ > URLSession::kMaximumRedirects) {
    return end(load, urlError(URLErrorCode::httpTooManyRedirects, next->url->absoluteString()));
  }
  load->askRedirect_(load, *load->response_, *std::move(next));
}

/// Takes the load's handle off the wire.
void Loads::pause(Load& load) {
  if (!std::exchange(load.isLoading_, false)) return;
  curl_multi_remove_handle(multi_.get(), load.easy());
  places_.leave(load.origin_);
  putWaiting(load.origin_);
}

/// The same in the middle of a transfer, without waiting for a look-up of a host's name.
void Loads::abandon(Load& load) {
  if (!load.isLoading_) return;
  curl_easy_setopt(load.easy(), CURLOPT_QUICK_EXIT, 1L);
  pause(load);
  load.handle_.reset();
}

void Loads::end(const std::shared_ptr<Load>& load, std::shared_ptr<const PlatformError> error) {
  abandon(*load);
  places_.forget(load->origin_, load);
  loads_.erase(load->place_);
  load->isEnded_ = true;
  if (load->handle_ && spare_.size() < kSpareHandles) {
    // Cookies are the load's alone; what stays with the handle is its TLS sessions.
    curl_easy_setopt(load->easy(), CURLOPT_COOKIELIST, "ALL");
    spare_.push_back(load->takeDown());
  }
  load->handle_.reset();
  DataResponse outcome;
  if (!error) outcome = {std::move(load->body_), load->response_};
  load->end_(std::move(outcome), std::move(error));
}

void Loads::failTimedOut() {
  auto now = Load::Clock::now();
  if (now < nextDeadline_) return;
  nextDeadline_ = Load::Clock::time_point::max();
  for (const auto& load : std::vector(loads_.begin(), loads_.end())) {
    auto deadline = load->deadline();
    if (deadline <= now) {
      end(load, urlError(URLErrorCode::timedOut, load->request_->url->absoluteString()));
    } else {
      nextDeadline_ = std::min(nextDeadline_, deadline);
    }
  }
}

}  // namespace quenwick::platform
