#pragma once

#include <string>

namespace httplib {
struct Response;
}

namespace quenwick::sandbox {

class Connection;
struct Answer;
struct RequestHead;
struct Service;

/// Answers requests as the service's scenario says, and queries about the sandbox itself.
/// Used by all connections at once.
class Responder {
 public:
  explicit Responder(Service& service) : service_(service) {}

  /// Fills the response to the connection's request, after the delay that its answer asks for.
  void respond(Connection& connection, const std::string& body, httplib::Response& response);

 private:
  void answerWith(const Answer& answer, Connection& connection, httplib::Response& response);
  void send(const Answer& answer, Connection& connection, httplib::Response& response);

  Service& service_;
};

}  // namespace quenwick::sandbox
