#include "tests/support/ChangingServer.h"

#include <arpa/inet.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace quenwick::tests {
namespace {

constexpr unsigned char kData = 0;
constexpr unsigned char kHeaders = 1;
constexpr unsigned char kSettings = 4;
constexpr unsigned char kLast = 1;  // of a stream; of settings: acknowledged
constexpr unsigned char kWholeHead = 4;
constexpr char kStatus200 = '\x88';

struct Frame {
  unsigned char type = 0;
  unsigned char flags = 0;
  std::string stream;  // four bytes
  std::string payload;
};

/// That many bytes; fewer at the end.
std::string read(SSL* stream, std::size_t size) {
  std::string bytes(size, '\0');
  std::size_t got = 0;
  for (std::size_t more = 0; got < size; got += more) {
    if (SSL_read_ex(stream, bytes.data() + got, size - got, &more) != 1) break;
  }
  bytes.resize(got);
  return bytes;
}

bool write(SSL* stream, const std::string& bytes) {
  std::size_t written = 0;
  return SSL_write_ex(stream, bytes.data(), bytes.size(), &written) == 1;
}

bool readFrame(SSL* stream, Frame& frame) {
  auto head = read(stream, 9);
  if (head.size() < 9) return false;
  auto byte = [&](std::size_t at) { return static_cast<unsigned char>(head[at]); };
  std::size_t size = std::size_t{byte(0)} << 16 | std::size_t{byte(1)} << 8 | byte(2);
  frame = {byte(3), byte(4), head.substr(5), read(stream, size)};
  return frame.payload.size() == size;
}

std::string bytesOf(const Frame& frame) {
  std::string bytes{'\0', '\0', static_cast<char>(frame.payload.size()),
                    static_cast<char>(frame.type), static_cast<char>(frame.flags)};
  return bytes + frame.stream + frame.payload;
}

int chooseHTTP2(SSL*, const unsigned char** chosen, unsigned char* size, const unsigned char* offer,
                unsigned int offered, void*) {
  static constexpr std::array<unsigned char, 3> kName{2, 'h', '2'};
  auto* out = const_cast<unsigned char**>(chosen);
  bool isOffered = SSL_select_next_proto(out, size, kName.data(), kName.size(), offer, offered) ==
                   OPENSSL_NPN_NEGOTIATED;
  return isOffered ? SSL_TLSEXT_ERR_OK : SSL_TLSEXT_ERR_ALERT_FATAL;
}

}  // namespace

ChangingServer::ChangingServer(int answersOverHTTP2, Closes closes)
    : answersOverHTTP2_(answersOverHTTP2), closes_(closes) {
  auto own = sandbox::CertificateAuthority::inFolder(folder_.path()).certificate({"a.example"});
  for (auto* context : {&context_, &http2_}) {
    context->reset(SSL_CTX_new(TLS_server_method()));
    SSL_CTX_use_certificate(context->get(), own.certificate.get());
    SSL_CTX_use_PrivateKey(context->get(), own.key.get());
  }
  SSL_CTX_set_alpn_select_cb(http2_.get(), &chooseHTTP2, nullptr);
  listen();
  accepting_ = std::thread([this] { accept(); });
}

ChangingServer::~ChangingServer() {
  shutdown(socket_, SHUT_RDWR);
  accepting_.join();
  {
    std::lock_guard lock(mutex_);
    for (int socket : sockets_) shutdown(socket, SHUT_RDWR);
  }
  for (auto& thread : threads_) thread.join();
  for (int socket : sockets_) close(socket);
  close(socket_);
}

platform::URLSessionConfiguration ChangingServer::configuration() const {
  platform::URLSessionConfiguration configuration;
  std::ifstream authority(sandbox::CertificateAuthority::inFolder(folder_.path()).file());
  configuration.additionalTrustAnchors = {std::istreambuf_iterator<char>(authority), {}};
  configuration.connectTo = {{"a.example", 443, "127.0.0.1", port_}};
  return configuration;
}

void ChangingServer::listen() {
  socket_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  auto* any = reinterpret_cast<sockaddr*>(&address);
  socklen_t size = sizeof address;
  if (bind(socket_, any, size) != 0 || ::listen(socket_, 64) != 0 ||
      getsockname(socket_, any, &size) != 0) {
    throw std::runtime_error("no server");
  }
  port_ = ntohs(address.sin_port);
}

void ChangingServer::accept() {
  // A client that is gone must not end the tests.
  sigset_t pipe;
  sigemptyset(&pipe);
  sigaddset(&pipe, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &pipe, nullptr);
  for (;;) {
    int socket = accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC);
    if (socket < 0) return;
    std::lock_guard lock(mutex_);
    sockets_.push_back(socket);
    threads_.emplace_back([this, socket] { serve(socket); });
  }
}

void ChangingServer::serve(int socket) {
  bool isFirst = connections_++ == 0;
  Stream stream(SSL_new((isFirst ? http2_ : context_).get()));
  SSL_set_fd(stream.get(), socket);
  if (SSL_accept(stream.get()) == 1) isFirst ? serveHTTP2(stream.get()) : serveHTTP1(stream.get());
  SSL_shutdown(stream.get());
  shutdown(socket, SHUT_RDWR);
  if (isFirst) isHTTP2Over_.set_value();
}

void ChangingServer::serveHTTP2(SSL* stream) const {
  static constexpr std::size_t kPreface = 24;
  Frame frame{.type = kSettings, .flags = 0, .stream = std::string(4, '\0'), .payload = {}};
  if (read(stream, kPreface).size() < kPreface || !write(stream, bytesOf(frame))) return;
  int left = answersOverHTTP2_;
  while ((left > 0 || closes_ == Closes::withRequest) && readFrame(stream, frame)) {
    bool isLast = (frame.flags & kLast) != 0;
    if (frame.type == kSettings && !isLast) {
      write(stream, bytesOf({kSettings, kLast, std::string(4, '\0'), {}}));
    } else if ((frame.type == kHeaders || frame.type == kData) && isLast) {
      if (left-- == 0) return;
      write(stream, bytesOf({kHeaders, kWholeHead, frame.stream, {kStatus200}}) +
                        bytesOf({kData, kLast, frame.stream, "page"}));
    }
  }
}

void ChangingServer::serveHTTP1(SSL* stream) const {
  std::string head;
  for (std::string byte; !(byte = read(stream, 1)).empty();) {
    head += byte;
    if (!head.ends_with("\r\n\r\n")) continue;
    std::string answer = "HTTP/1.1 200 OK\r\n";
    answer.append(isFolded_ ? " folded: yes\r\n" : "").append("Content-Length: 0\r\n\r\n");
    if (!write(stream, answer)) return;
    head.clear();
  }
}

}  // namespace quenwick::tests
