#include "sandbox/Connection.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>

namespace quenwick::sandbox {
namespace {

constexpr std::size_t kBufferSize = 16384;
constexpr std::size_t kLongestHead = 65536;
constexpr timeval kLongestSilence = {.tv_sec = 60, .tv_usec = 0};
constexpr timeval kNoLimit = {.tv_sec = 0, .tv_usec = 0};

std::uint64_t nextNumber() {
  static std::atomic<std::uint64_t> last = 0;
  return ++last;
}

void prepareSocket(int socket) {
  const int yes = 1;
  ::fcntl(socket, F_SETFD, FD_CLOEXEC);
  ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
  ::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &kLongestSilence, sizeof kLongestSilence);
  ::setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &kNoLimit, sizeof kNoLimit);
}

}  // namespace

Connection::Connection(int socket, SSL_CTX* context)
    : socket_(socket),
      number_(nextNumber()),
      ssl_(context != nullptr ? SSL_new(context) : nullptr) {
  prepareSocket(socket);
  if (ssl_) SSL_set_fd(ssl_.get(), socket);
  isBroken_ = context != nullptr && !ssl_;
}

Connection::~Connection() { close(); }

void Connection::Deleter::operator()(SSL* ssl) const { SSL_free(ssl); }

bool Connection::accept() {
  if (isBroken_) return false;
  ERR_clear_error();
  isBroken_ = ssl_ && SSL_accept(ssl_.get()) != 1;
  return !isBroken_;
}

bool Connection::awaitHead() {
  received_.erase(0, readPosition_);
  readPosition_ = 0;
  received_.erase(0, std::min(received_.find_first_not_of("\r\n"), received_.size()));
  std::size_t end = received_.find("\r\n\r\n");
  while (end == std::string::npos && received_.size() < kLongestHead) {
    const std::size_t searched = received_.size() < 3 ? 0 : received_.size() - 3;
    if (!receive()) return false;
    end = received_.find("\r\n\r\n", searched);
  }
  head_ = received_.substr(0, end);
  return true;
}

bool Connection::receive() {
  if (!flush()) return false;
  const std::size_t had = received_.size();
  received_.resize(had + kBufferSize);
  char* space = received_.data() + had;
  long count = 0;
  ERR_clear_error();
  do {
    count =
        ssl_ ? SSL_read(ssl_.get(), space, kBufferSize) : ::recv(socket_, space, kBufferSize, 0);
  } while (count < 0 && !ssl_ && errno == EINTR);
  received_.resize(had + static_cast<std::size_t>(std::max(count, 0L)));
  const bool isEnd =
      ssl_ ? SSL_get_error(ssl_.get(), static_cast<int>(count)) == SSL_ERROR_ZERO_RETURN
           : count == 0;
  isBroken_ = count <= 0 && !isEnd;
  return count > 0;
}

long Connection::read(char* bytes, std::size_t size) {
  if (readPosition_ == received_.size()) {
    received_.clear();
    readPosition_ = 0;
    if (!receive()) return isBroken_ ? -1 : 0;
  }
  const std::size_t count = std::min(size, received_.size() - readPosition_);
  std::memcpy(bytes, received_.data() + readPosition_, count);
  readPosition_ += count;
  return static_cast<long>(count);
}

bool Connection::write(std::string_view bytes) {
  if (isBroken_) return false;
  written_ += bytes;
  return written_.size() < kBufferSize || flush();
}

bool Connection::flush() {
  if (!isBroken_ && !written_.empty()) isBroken_ = !send(written_);
  written_.clear();
  return !isBroken_;
}

bool Connection::send(std::string_view bytes) {
  ERR_clear_error();
  if (ssl_) return SSL_write(ssl_.get(), bytes.data(), static_cast<int>(bytes.size())) > 0;
  while (!bytes.empty()) {
    const auto count = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

void Connection::cut() {
  isBroken_ = true;
  ::shutdown(socket_, SHUT_RDWR);
}

void Connection::close() {
  if (!flush()) return;
  if (ssl_) SSL_shutdown(ssl_.get());
  cut();
}

}  // namespace quenwick::sandbox
