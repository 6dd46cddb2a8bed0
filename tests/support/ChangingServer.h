#pragma once

#include <openssl/ssl.h>

#include <atomic>
#include <future>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "quenwick/platform/URLSession.h"
#include "sandbox/CertificateAuthority.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenwick::tests {

/// A server of https://a.example/ that speaks HTTP/2 on its first connection, which it closes after
/// that many answers, or with the request after those, and HTTP/1.1 on all others.
class ChangingServer {
 public:
  enum class Closes { afterAnswer, withRequest };

  explicit ChangingServer(int answersOverHTTP2, Closes closes = Closes::afterAnswer);
  ~ChangingServer();
  ChangingServer(const ChangingServer&) = delete;
  ChangingServer& operator=(const ChangingServer&) = delete;

  platform::URLSessionConfiguration configuration() const;

  /// From now on, whether the first field of an answer over HTTP/1.1 begins with a blank.
  void setFolded(bool isFolded) { isFolded_ = isFolded; }

  int connections() const { return connections_; }

  void waitForEndOfHTTP2() { isHTTP2Over_.get_future().wait(); }

 private:
  struct Free {
    void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
    void operator()(SSL* connection) const { SSL_free(connection); }
  };
  using Stream = std::unique_ptr<SSL, Free>;

  void listen();
  void accept();
  void serve(int socket);
  void serveHTTP2(SSL* stream) const;
  void serveHTTP1(SSL* stream) const;

  const int answersOverHTTP2_;
  const Closes closes_;
  TemporaryDirectory folder_;
  std::unique_ptr<SSL_CTX, Free> context_;
  std::unique_ptr<SSL_CTX, Free> http2_;
  int socket_ = -1;
  std::uint16_t port_ = 0;
  std::atomic<bool> isFolded_ = false;
  std::atomic<int> connections_ = 0;
  std::promise<void> isHTTP2Over_;
  std::mutex mutex_;
  std::vector<int> sockets_;
  std::vector<std::thread> threads_;
  std::thread accepting_;
};

}  // namespace quenwick::tests
