#include "quenwick/platform/URLLoader_curl.h"

#include <openssl/crypto.h>

#include <chrono>
#include <future>
#include <utility>

#include "quenwick/platform/Loads_curl.h"
#include "quenwick/platform/Thread.h"

namespace quenwick::platform {
namespace {

constexpr std::chrono::milliseconds kLongestSleep(60'000);
constexpr std::chrono::milliseconds kShortestSleep(20);

/// Of a thread that hands over several loads together.
struct Holding {
  int depth = 0;
  bool isWakeDue = false;
};
thread_local Holding holding;

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
  loads_ = std::make_unique<Loads>();
  thread_ = startThread("quenwick-load", [this] { run(); });
  threadID_ = thread_.get_id();
  // Again, after curl and what it stands on have set up their own ends: it comes before theirs.
  atProcessExit([] { shared().stop(); });
}

void URLLoader::start(std::shared_ptr<Load> load, Load::End end) {
  post([this, load = std::move(load), end = std::move(end)]() mutable {
    loads_->start(load, std::move(end));
  });
}

void URLLoader::cancel(std::shared_ptr<Load> load) {
  load->cancel();
  post([this, load = std::move(load)] { loads_->cancel(load); });
}

void URLLoader::answerRedirect(std::shared_ptr<Load> load, std::optional<URLRequest> request) {
  if (threadID_ == std::this_thread::get_id()) {
    return loads_->goOn(load, std::move(request));
  }
  post([this, load = std::move(load), request = std::move(request)]() mutable {
    loads_->goOn(load, std::move(request));
  });
}

void URLLoader::closeIdleConnections() {
  auto done = std::make_shared<std::promise<void>>();
  post([this, done] {
    loads_->closeConnections();
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
  }
  if (holding.depth > 0) {
    holding.isWakeDue = true;
  } else {
    wake();
  }
}

/// Once for all that was posted since the thread last looked.
void URLLoader::wake() {
  if (!isWoken_.exchange(true)) wakeUp_.wake();
}

void URLLoader::run() {
  while (!isStopping_) {
    runCommands();
    loads_->drive();
    if (!isStopping_) sleep();
  }
}

/// Until there is something to do. Where the system had no descriptor to be woken by, the thread
/// looks by itself.
void URLLoader::sleep() {
  curl_waitfd wakeUp{.fd = wakeUp_.descriptor(), .events = CURL_WAIT_POLLIN, .revents = 0};
  loads_->wait(wakeUp, wakeUp.fd >= 0 ? kLongestSleep : kShortestSleep);
  if (wakeUp.revents != 0) wakeUp_.clear();
}

void URLLoader::runCommands() {
  for (;;) {
    isWoken_ = false;  // before it looks: what comes after this look wakes it again
    std::vector<Command> commands;
    {
      std::lock_guard lock(mutex_);
      commands.swap(commands_);
    }
    if (commands.empty()) return;
    for (const auto& command : commands) command();
  }
}

/// At exit: the thread ends between two steps, before curl and OpenSSL are torn down.
void URLLoader::stop() {
  if (threadID_ == std::this_thread::get_id()) return;  // it exits itself, between two steps
  post([this] { isStopping_ = true; });
  if (thread_.joinable()) thread_.join();
}

}  // namespace quenwick::platform
