#include "sandbox/Server.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <limits>
#include <system_error>

#include "sandbox/ConnectionStream.h"
#include "sandbox/OpenSockets.h"
#include "sandbox/Responder.h"
#include "sandbox/WorkerPool.h"

namespace quenwick::sandbox {
namespace {

constexpr std::size_t kMostThreads = 1024;
constexpr int kBacklog = 1024;
constexpr const char* kAnyPath = R"([\s\S]*)";
constexpr const char* kRanges = "Accept-Ranges";

/// The connection that this thread serves: the HTTP library hands its handlers the request alone.
thread_local Connection* servedConnection = nullptr;

/// Gives the pool the form that the HTTP library asks for.
class TaskQueue : public httplib::TaskQueue {
 public:
  void enqueue(std::function<void()> job) override { pool_.run(std::move(job)); }
  void shutdown() override { pool_.finish(); }

 private:
  WorkerPool pool_{kMostThreads};
};

/// Restores how the process treats SIGPIPE: the HTTP library sets it, but a host may own it.
class BrokenPipeSignalKept {
 public:
  BrokenPipeSignalKept() { ::sigaction(SIGPIPE, nullptr, &action_); }
  ~BrokenPipeSignalKept() { ::sigaction(SIGPIPE, &action_, nullptr); }
  BrokenPipeSignalKept(const BrokenPipeSignalKept&) = delete;
  BrokenPipeSignalKept& operator=(const BrokenPipeSignalKept&) = delete;

 private:
  struct sigaction action_{};
};

/// Blocks all signals in this thread; threads that it starts meanwhile inherit that.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t before_{};
};

/// Leaves of a request what its parsing needs: bodies are kept as they came, and whatever would
/// change an answer (a range, a coding) is dropped. The record is made of the head as received.
void simplify(httplib::Request& request) {
  for (const char* name : {"Accept-Encoding", "Content-Type", "Range"}) request.headers.erase(name);
  request.ranges.clear();
  if (!request.has_header("Content-Length") && !request.has_header("Transfer-Encoding")) {
    request.headers.emplace("Content-Length", "0");
  } else if (request.method == "GET" || request.method == "OPTIONS") {
    // Or else the HTTP library would take the body for the next request.
    request.method = "POST";
  }
}

}  // namespace

class Server::Listener : public httplib::Server {
 public:
  Listener(SSL_CTX* context, Service& service) : context_(context), responder_(service) {
    new_task_queue = [] { return new TaskQueue; };
    set_keep_alive_max_count(std::numeric_limits<int>::max());
    set_keep_alive_timeout(60);
    set_socket_options([](socket_t socket) {
      const int yes = 1;
      ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
      ::fcntl(socket, F_SETFD, FD_CLOEXEC);
    });
    setHandlers();
  }

  std::uint16_t bind(std::uint16_t port) {
    int bound = port;
    if (port == 0)
      bound = bind_to_any_port("127.0.0.1");
    else if (!bind_to_port("127.0.0.1", port))
      bound = -1;
    if (bound <= 0) {
      throw std::system_error(errno, std::generic_category(),
                              "cannot listen on 127.0.0.1:" + std::to_string(port));
    }
    // The HTTP library's own backlog of 5 makes a burst of connections wait for a second.
    ::listen(svr_sock_, kBacklog);
    return static_cast<std::uint16_t>(bound);
  }

  /// Makes `listen_after_bind` return, whether it runs already or not.
  void end(std::thread& listening) {
    const socket_t socket = svr_sock_.exchange(INVALID_SOCKET);
    ::shutdown(socket, SHUT_RDWR);
    sockets_.shutDown();
    listening.join();
    ::close(socket);
  }

 private:
  void setHandlers() {
    const auto respond = [this](const httplib::Request& request, httplib::Response& response) {
      responder_.respond(*servedConnection, request.body, response);
      // Else the HTTP library offers ranges in answers to HEAD. What is empty is taken out below.
      if (!response.has_header(kRanges)) response.headers.emplace(kRanges, "");
    };
    set_post_routing_handler([](const auto&, auto& response) {
      if (response.get_header_value(kRanges).empty()) response.headers.erase(kRanges);
    });
    // Requests without a body are answered before the patterns are tried.
    set_pre_routing_handler([respond](const auto& request, auto& response) {
      if (request.get_header_value("Content-Length") != "0") return HandlerResponse::Unhandled;
      respond(request, response);
      return HandlerResponse::Handled;
    });
    Get(kAnyPath, respond).Post(kAnyPath, respond).Put(kAnyPath, respond);
    Patch(kAnyPath, respond).Delete(kAnyPath, respond).Options(kAnyPath, respond);
  }

  bool process_and_close_socket(socket_t socket) override {
    const OpenSockets::Entry entry(sockets_, socket);
    Connection connection(socket, context_);
    ConnectionStream stream(connection);
    servedConnection = &connection;
    if (!connection.accept()) return false;
    bool isLast = false;
    while (!isLast && connection.awaitHead()) {
      if (!process_request(stream, false, isLast, simplify)) break;
    }
    return true;
  }

  SSL_CTX* context_;
  Responder responder_;
  OpenSockets sockets_;
};

Server::Server(std::uint16_t port, SSL_CTX* context, Service& service) {
  const BrokenPipeSignalKept brokenPipeSignal;
  listener_ = std::make_unique<Listener>(context, service);
  port_ = listener_->bind(port);
  const SignalsBlocked signals;
  thread_ = std::thread([this] { listener_->listen_after_bind(); });
}

Server::~Server() { listener_->end(thread_); }

}  // namespace quenwick::sandbox
