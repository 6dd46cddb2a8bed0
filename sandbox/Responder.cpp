#include "sandbox/Responder.h"

#include <httplib.h>

#include "sandbox/Address.h"
#include "sandbox/Connection.h"
#include "sandbox/Queries.h"
#include "sandbox/RequestHead.h"
#include "sandbox/Service.h"

namespace quenwick::sandbox {
namespace {

/// Sends a body piece by piece; ends the connection when half of it is sent, if it is to be cut.
void stream(const Answer& sent, Connection& connection, httplib::Response& response) {
  const auto answer = std::make_shared<const Answer>(sent);
  const std::uint64_t size = answer->body.size();
  const std::uint64_t end = answer->cut == Cut::during ? size / 2 : size;
  const auto sendPiece = [answer, &connection, end](std::size_t offset, httplib::DataSink& sink) {
    if (offset < end) {
      const auto piece = answer->body.piece(offset, end);
      return sink.write(piece.data(), piece.size());
    }
    if (answer->cut == Cut::during) {
      connection.close();
      return false;
    }
    sink.done();
    return true;
  };
  if (answer->chunked) {
    response.set_chunked_content_provider(answer->type, sendPiece);
    return;
  }
  response.set_content_provider(
      size, answer->type, [sendPiece](std::size_t offset, std::size_t, httplib::DataSink& sink) {
        return sendPiece(offset, sink);
      });
}

}  // namespace

void Responder::respond(Connection& connection, const std::string& body,
                        httplib::Response& response) {
  const RequestHead head(connection.head());
  if (isQuery(head)) return send(answerQuery(service_, head, body), connection, response);
  const auto request = std::make_shared<const Request>(
      Request{connection.number(), connection.isSecure(), connection.head(), body,
              std::chrono::system_clock::now()});
  service_.recorder.add(request);
  const std::string host = hostOfAuthority(head.header("Host"));
  if (const Answer* answer = service_.scenario.routes().find(host, head.path)) {
    return answerWith(*answer, connection, response);
  }
  const auto answer = service_.behavior ? service_.behavior->answer(*request, head) : std::nullopt;
  if (answer) return answerWith(*answer, connection, response);
  response.status = 404;
  response.set_content("Nothing is served at " + host + std::string(head.path) + "\n",
                       "text/plain; charset=utf-8");
}

void Responder::answerWith(const Answer& answer, Connection& connection,
                           httplib::Response& response) {
  if (answer.delay.count() > 0 && !service_.pause.wait(answer.delay)) return connection.cut();
  if (answer.cut == Cut::before) return connection.cut();
  send(answer, connection, response);
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

}  // namespace quenwick::sandbox
