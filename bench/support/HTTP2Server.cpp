#include "bench/support/HTTP2Server.h"

#include <arpa/inet.h>
#include <openssl/pem.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <thread>

#include "bench/support/LocalAddress.h"
#include "sandbox/CertificateAuthority.h"

namespace quenwick::bench {
namespace {

constexpr auto kConfiguration = R"(daemon off;
master_process off;
worker_processes 1;
pid nginx.pid;
error_log error.log;
events { worker_connections 512; }
http {
  map $connection_requests $isFirst { 1 1; default 0; }
  log_format connection $connection;
  access_log connections.log connection if=$isFirst;
  client_body_temp_path bodies;
  proxy_temp_path proxy;
  fastcgi_temp_path fastcgi;
  uwsgi_temp_path uwsgi;
  scgi_temp_path scgi;
  server {
    listen 127.0.0.1:PORT ssl http2;
    ssl_certificate own.pem;
    ssl_certificate_key key.pem;
    keepalive_requests 1000000000;
    keepalive_timeout 600;
    location / {
      ANSWER
    }
  }
}
)";
constexpr auto kAcknowledge = R"(default_type application/json;
      return 200 '{"message":"accepted","request_id":"5f0c"}';)";
constexpr auto kHandOn = R"(proxy_http_version 1.1;
      proxy_set_header Host $host;
      proxy_set_header Connection "";
      proxy_pass http://127.0.0.1:)";

template <class Call>
bool withAddress(std::uint16_t port, Call call) {
  auto address = localAddress(port);
  return call(reinterpret_cast<sockaddr*>(&address), socklen_t{sizeof address}) == 0;
}

bool answers(std::uint16_t port) {
  int probe = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  bool isThere =
      withAddress(port, [&](auto* address, auto size) { return ::connect(probe, address, size); });
  ::close(probe);
  return isThere;
}

void awaitServer(std::uint16_t port) {
  for (int tries = 0; tries < 500; ++tries) {
    if (answers(port)) return;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  throw std::runtime_error("nginx did not start");
}

}  // namespace

HTTP2Server::HTTP2Server(std::vector<std::string> hosts, std::optional<std::uint16_t> behind)
    : hosts_(std::move(hosts)), behind_(behind), port_(SilentServer().port()) {
  writeCertificate();
  writeConfiguration();
  server_ = std::make_unique<tests::Daemon>(
      std::vector<std::string>{"/usr/sbin/nginx", "-p", folder_.path().string(), "-c",
                               (folder_.path() / "nginx.conf").string(), "-e", "error.log"});
  awaitServer(port_);
}

void HTTP2Server::writeCertificate() const {
  auto authority = sandbox::CertificateAuthority::inFolder(folder_.path() / "authority");
  auto own = authority.certificate(hosts_);
  auto write = [&](const char* name, auto writeTo) {
    std::unique_ptr<BIO, int (*)(BIO*)> file(BIO_new_file((folder_.path() / name).c_str(), "w"),
                                             BIO_free);
    sandbox::requireOpenSSL(file && writeTo(file.get()) == 1, "write a certificate");
  };
  write("own.pem", [&](BIO* file) { return PEM_write_bio_X509(file, own.certificate.get()); });
  write("key.pem", [&](BIO* file) {
    return PEM_write_bio_PrivateKey(file, own.key.get(), nullptr, nullptr, 0, nullptr, nullptr);
  });
}

void HTTP2Server::writeConfiguration() const {
  std::string text = kConfiguration;
  auto replace = [&](std::string_view name, const std::string& by) {
    text.replace(text.find(name), name.size(), by);
  };
  replace("PORT", std::to_string(port_));
  replace("ANSWER", behind_ ? kHandOn + std::to_string(*behind_) + ";" : kAcknowledge);
  std::ofstream(folder_.path() / "nginx.conf") << text;
}

platform::URLSessionConfiguration HTTP2Server::configuration() const {
  platform::URLSessionConfiguration configuration;
  std::ifstream authority(folder_.path() / "authority" / "ca.pem", std::ios::binary);
  configuration.additionalTrustAnchors = {std::istreambuf_iterator<char>(authority), {}};
  for (const auto& host : hosts_) {
    configuration.connectTo.push_back({host, 443, "127.0.0.1", port_});
  }
  return configuration;
}

std::size_t HTTP2Server::connections() const {
  std::ifstream log(folder_.path() / "connections.log");
  std::size_t count = 0;
  for (std::string line; std::getline(log, line);) ++count;
  return count;
}

SilentServer::SilentServer() : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  if (socket_ < 0) throw std::runtime_error("no socket");
  withAddress(0, [&](auto* address, auto size) { return ::bind(socket_, address, size); });
  ::listen(socket_, 64);
}

SilentServer::~SilentServer() { ::close(socket_); }

std::uint16_t SilentServer::port() const {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  ::getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size);
  return ntohs(address.sin_port);
}

}  // namespace quenwick::bench
