#include "sandbox/Responder.h"

#include <httplib.h>

#include <boost/json.hpp>

#include "sandbox/Address.h"
#include "sandbox/Connection.h"
#include "sandbox/RequestHead.h"
#include "sandbox/Service.h"

namespace quenwick::sandbox {
namespace {

constexpr std::string_view kQueries = "/_sandbox/";

void refuse(httplib::Response& response, const std::string& why) {
  response.status = 404;
  response.set_content(why + "\n", "text/plain; charset=utf-8");
}

/// Sends a body piece by piece; ends the connection when half of it is sent, if it is to be cut.
void stream(const Answer& answer, Connection& connection, httplib::Response& response) {
  const std::uint64_t end = answer.cut == Cut::during ? answer.body.size() / 2 : answer.body.size();
  const auto sendPiece = [&answer, &connection, end](std::size_t offset, httplib::DataSink& sink) {
    if (offset < end) {
      const auto piece = answer.body.piece(offset, end);
      return sink.write(piece.data(), piece.size());
    }
    if (answer.cut == Cut::during) {
      connection.close();
      return false;
    }
    sink.done();
    return true;
  };
  if (answer.chunked) {
    response.set_chunked_content_provider(answer.type, sendPiece);
    return;
  }
  response.set_content_provider(
      answer.body.size(), answer.type,
      [sendPiece](std::size_t offset, std::size_t, httplib::DataSink& sink) {
        return sendPiece(offset, sink);
      });
}

}  // namespace

void Responder::respond(Connection& connection, const std::string& body,
                        httplib::Response& response) {
  const auto now = std::chrono::system_clock::now();
  const RequestHead head(connection.head());
  if (head.path.starts_with(kQueries)) return respondToQuery(head, response);

  service_.recorder.add({connection.isSecure(), connection.head(), body, now});
  const std::string host = hostOfAuthority(head.header("Host"));
  const Answer* answer = service_.scenario.routes().find(host, head.path);
  if (answer == nullptr) {
    return refuse(response, "Nothing is served at " + host + std::string(head.path));
  }
  if (answer->delay.count() > 0 && !service_.pause.wait(answer->delay)) return connection.cut();
  if (answer->cut == Cut::before) return connection.cut();
  send(*answer, connection, response);
}

void Responder::send(const Answer& answer, Connection& connection, httplib::Response& response) {
  response.status = answer.status;
  for (const auto& [name, value] : answer.headers) response.headers.emplace(name, value);
  if (answer.body.size() == 0) return;
  if (answer.chunked || answer.body.isRepeated() || answer.cut == Cut::during) {
    stream(answer, connection, response);
  } else {
    response.body = answer.body.text();
    response.headers.emplace("Content-Type", answer.type);
  }
}

void Responder::respondToQuery(const RequestHead& head, httplib::Response& response) {
  const bool isRead = head.method == "GET" || head.method == "HEAD";
  response.status = 200;
  if (head.path == "/_sandbox/requests" && head.method == "DELETE") {
    service_.recorder.forget();
    response.status = 204;
  } else if (head.path == "/_sandbox/requests" && isRead) {
    response.set_content(service_.recorder.json(), "application/json");
  } else if (head.path == "/_sandbox/links" && isRead) {
    const boost::json::object links{{"links", boost::json::value_from(service_.scenario.links())}};
    response.set_content(boost::json::serialize(links), "application/json");
  } else {
    refuse(response, "There is no such query");
  }
}

}  // namespace quenwick::sandbox
