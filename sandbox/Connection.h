#pragma once

#include <openssl/types.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace quenwick::sandbox {

/// The server's end of a connection, plain or over TLS, buffered in both directions. The socket
/// belongs to the caller. Used by one thread; another may only shut the socket down.
class Connection {
 public:
  /// Without a context the connection is plain.
  Connection(int socket, SSL_CTX* context);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  int socket() const { return socket_; }
  /// The connections of the process are counted from 1.
  std::uint64_t number() const { return number_; }
  bool isSecure() const { return ssl_ != nullptr; }

  /// Shakes hands, if the connection is over TLS.
  bool accept();

  /// Waits for the next request; false when the client is gone or was silent for too long.
  bool awaitHead();

  /// First line and headers of that request, as received, until the next is awaited.
  const std::string& head() const { return head_; }

  /// How many bytes were read, 0 at the end, -1 on failure. Sends what was written first.
  long read(char* bytes, std::size_t size);

  /// Keeps the bytes until there are many, `flush` is called or an answer is awaited.
  bool write(std::string_view bytes);
  bool flush();

  /// Ends the connection without another byte, not even of TLS.
  void cut();

  /// Sends what was written and ends the connection in order.
  void close();

 private:
  struct Deleter {
    void operator()(SSL* ssl) const;
  };

  bool receive();
  bool send(std::string_view bytes);

  int socket_;
  const std::uint64_t number_;
  std::unique_ptr<SSL, Deleter> ssl_;
  std::string head_;
  std::string received_;
  std::size_t readPosition_ = 0;
  std::string written_;
  bool isBroken_ = false;
};

}  // namespace quenwick::sandbox
