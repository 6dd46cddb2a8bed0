#include "quenwick/platform/URLLoader_curl.h"

#include <openssl/crypto.h>

#include <algorithm>
#include <future>
#include <utility>

#include "quenwick/platform/Descriptors_curl.h"
#include "quenwick/platform/OpenSockets_curl.h"
#include "quenwick/platform/PostsTogether.h"
#include "quenwick/platform/Text.h"
#include "quenwick/platform/Thread.h"
#include "quenwick/platform/URLError_curl.h"

namespace quenwick::platform {
namespace {

constexpr std::size_t kConnectionsPerHost = 6;
constexpr std::size_t kSpareHandles = 64;
/// How many loads there are when what they send is held to be written together.
constexpr std::size_t kWorthHolding = 4;

std::shared_ptr<CURLM> makeMulti() {
  std::shared_ptr<CURLM> multi(makeCloseOnExecMulti(), curl_multi_cleanup);
  curl_multi_setopt(multi.get(), CURLMOPT_MAX_HOST_CONNECTIONS,
                    static_cast<long>(kConnectionsPerHost));
  return multi;
}

/// Of a thread that hands over several loads together.
struct Holding {
  int depth = 0;
  bool isWakeDue = false;
};
thread_local Holding holding;

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

URLLoader& URLLoader::shared() {
  static auto& instance = *new URLLoader;
  return instance;
}

URLLoader::URLLoader() {
  // An exit that begins meanwhile waits until there is a thread to be stopped.
  static std::mutex beginning;
  std::lock_guard lock(beginning);
  // OpenSSL is not torn down at exit, unless the host has asked for that before: the process may
  // exit while another thread is still setting up what is torn down.
  OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);
  isStopped_ = !atProcessExit([] {
    {
      std::lock_guard wait(beginning);
    }
    shared().stop();
  });
  if (isStopped_) return;
  curl_global_init(CURL_GLOBAL_DEFAULT);
  multi_ = makeMulti();
  thread_ = startThread("quenwick-load", [this] { run(); });
  threadID_ = thread_.get_id();
  // Again, after curl and what it stands on have set up their own ends: it comes before theirs.
  atProcessExit([] { shared().stop(); });
}

void URLLoader::start(std::shared_ptr<Load> load, Load::End end) {
  load->end_ = std::move(end);
  post([this, load = std::move(load)] {
    load->started_ = Load::Clock::now();
    load->place_ = loads_.insert(loads_.end(), load);
    begin(load);
  });
}

void URLLoader::cancel(std::shared_ptr<Load> load) {
  load->isCancelled_ = true;
  post([this, load = std::move(load)] {
    if (std::ranges::find(loads_, load) == loads_.end()) return;  // not begun, or ended
    end(load, urlError(URLErrorCode::cancelled, ""));
  });
}

void URLLoader::answerRedirect(std::shared_ptr<Load> load, std::optional<URLRequest> request) {
  if (threadID_ == std::this_thread::get_id()) return goOn(load, std::move(request));
  post([this, load = std::move(load), request = std::move(request)]() mutable {
    goOn(load, std::move(request));
  });
}

void URLLoader::goOn(const std::shared_ptr<Load>& load, std::optional<URLRequest> request) {
  if (load->isEnded_) return;
  if (!request) return end(load, nullptr);
  load->setNext(*std::move(request));
  begin(load);
}

void URLLoader::closeIdleConnections() {
  auto done = std::make_shared<std::promise<void>>();
  post([this, done] {
    spare_.clear();
    if (loads_.empty()) {
      auto fresh = makeMulti();
      std::lock_guard lock(mutex_);
      multi_.swap(fresh);
    }
    done->set_value();
  });
  done->get_future().wait();
}

void URLLoader::hold() { ++holding.depth; }

void URLLoader::letGo() {
  if (--holding.depth == 0 && std::exchange(holding.isWakeDue, false)) shared().wake();
}

void URLLoader::post(Command command) {
  {
    std::lock_guard lock(mutex_);
    commands_.push_back(std::move(command));
    if (isStopped_) return;  // kept for good, as the task is that waits for it
    if (commands_.size() > 1 && !holding.isWakeDue) return;  // whoever came first wakes it
    if (holding.depth > 0) {
      holding.isWakeDue = true;
      return;
    }
  }
  wake();
}

/// Without the lock, which the woken thread takes first of all.
void URLLoader::wake() {
  if (wakeUp_.wake()) return;
  std::shared_ptr<CURLM> multi;
  {
    std::lock_guard lock(mutex_);
    if (!commands_.empty()) multi = multi_;
  }
  if (multi) curl_multi_wakeup(multi.get());
}

void URLLoader::run() {
  while (!isStopping_) {
    runCommands();
    drive();
    failTimedOut();
    if (!isStopping_) sleep();
  }
}

/// Loads that begin together are written together. They are driven a second time, as curl may
/// forget to look again at a transfer whose answer another one of the connection has read.
void URLLoader::drive() {
  bool isInCompany = hasBegun_ && loads_.size() >= kWorthHolding;
  if (isInCompany) OpenSockets::shared().hold();
  for (bool goesOn = true; goesOn;) {
    bool hadBegun = std::exchange(hasBegun_, false);
    int running = 0;
    curl_multi_perform(multi_.get(), &running);
    takeEnded();
    goesOn = hasBegun_ || (hadBegun && loads_.size() > 1);
  }
  if (isInCompany) OpenSockets::shared().letGo();
}

/// Until there is something to do.
void URLLoader::sleep() {
  curl_waitfd wakeUp{.fd = wakeUp_.descriptor(), .events = CURL_WAIT_POLLIN, .revents = 0};
  unsigned count = wakeUp.fd >= 0 ? 1 : 0;
  curl_multi_poll(multi_.get(), &wakeUp, count, pollMilliseconds(), nullptr);
  if (wakeUp.revents != 0) wakeUp_.clear();
}

void URLLoader::runCommands() {
  for (;;) {
    std::vector<Command> commands;
    {
      std::lock_guard lock(mutex_);
      commands.swap(commands_);
    }
    if (commands.empty()) return;
    for (const auto& command : commands) command();
  }
}

void URLLoader::takeEnded() {
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
void URLLoader::begin(const std::shared_ptr<Load>& load) {
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
  origins_[load->origin_].waiting.push_back(load);
  putWaiting(load->origin_);
}

void URLLoader::put(const std::shared_ptr<Load>& load) {
  load->isLoading_ = true;
  curl_multi_add_handle(multi_.get(), load->easy());
  hasBegun_ = true;
}

/// Nothing went wrong but that the handle fits no connection that there is.
void URLLoader::putAgain(const std::shared_ptr<Load>& load) {
  pause(*load);
  load->takeAnotherHandle();
  origins_[load->origin_].waiting.push_front(load);
  putWaiting(load->origin_);
}

/// Puts those on the wire for which there is room.
void URLLoader::putWaiting(const std::string& name) {
  auto found = origins_.find(name);
  if (found == origins_.end()) return;
  auto& [loading, isMultiplexed, waiting] = found->second;
  auto most = isMultiplexed ? URLSession::kMostAtOnce : kConnectionsPerHost;
  while (!waiting.empty() && loading < most) {
    ++loading;
    put(waiting.front());
    waiting.pop_front();
  }
  if (loading == 0) origins_.erase(found);
}

/// A request of the load was answered, or failed.
void URLLoader::hopEnded(const std::shared_ptr<Load>& load, CURLcode code) {
  if (load->isHandleUnfit_) return putAgain(load);
  long version = CURL_HTTP_VERSION_NONE;
  curl_easy_getinfo(load->easy(), CURLINFO_HTTP_VERSION, &version);
  if (version >= CURL_HTTP_VERSION_2_0) {
    origins_[load->origin_].isMultiplexed = true;
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
void URLLoader::pause(Load& load) {
  if (!std::exchange(load.isLoading_, false)) return;
  curl_multi_remove_handle(multi_.get(), load.easy());
  --origins_[load.origin_].loading;
  putWaiting(load.origin_);
}

/// The same in the middle of a transfer, without waiting for a look-up of a host's name.
void URLLoader::abandon(Load& load) {
  if (!load.isLoading_) return;
  curl_easy_setopt(load.easy(), CURLOPT_QUICK_EXIT, 1L);
  pause(load);
  load.handle_.reset();
}

void URLLoader::end(const std::shared_ptr<Load>& load, std::shared_ptr<const PlatformError> error) {
  abandon(*load);
  if (auto origin = origins_.find(load->origin_); origin != origins_.end()) {
    std::erase(origin->second.waiting, load);
  }
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

void URLLoader::failTimedOut() {
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

int URLLoader::pollMilliseconds() const {
  constexpr auto kLongest = std::chrono::milliseconds(60'000);
  if (nextDeadline_ == Load::Clock::time_point::max()) return static_cast<int>(kLongest.count());
  auto left = std::chrono::ceil<std::chrono::milliseconds>(nextDeadline_ - Load::Clock::now());
  return static_cast<int>(std::clamp(left, std::chrono::milliseconds(0), kLongest).count());
}

/// At exit: the thread ends between two steps, before curl and OpenSSL are torn down.
void URLLoader::stop() {
  if (threadID_ == std::this_thread::get_id()) return;  // it exits itself, between two steps
  post([this] { isStopping_ = true; });
  if (thread_.joinable()) thread_.join();
}

}  // namespace quenwick::platform
