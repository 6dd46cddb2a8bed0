#pragma once

#include <httplib.h>

#include "sandbox/Connection.h"

namespace quenwick::sandbox {

/// A connection as the HTTP library reads and writes it.
class ConnectionStream : public httplib::Stream {
 public:
  explicit ConnectionStream(Connection& connection) : connection_(connection) {}

  bool is_readable() const override { return true; }
  bool is_writable() const override { return true; }

  ssize_t read(char* bytes, std::size_t size) override { return connection_.read(bytes, size); }

  ssize_t write(const char* bytes, std::size_t size) override {
    return connection_.write({bytes, size}) ? static_cast<ssize_t>(size) : -1;
  }

  /// The addresses are 127.0.0.1 always, and nobody asks for them.
  void get_remote_ip_and_port(std::string&, int&) const override {}
  void get_local_ip_and_port(std::string&, int&) const override {}

  socket_t socket() const override { return connection_.socket(); }

 private:
  Connection& connection_;
};

}  // namespace quenwick::sandbox
