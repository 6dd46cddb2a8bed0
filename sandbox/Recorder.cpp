#include "sandbox/Recorder.h"

#include <boost/json.hpp>

#include "sandbox/Address.h"
#include "sandbox/RequestHead.h"
#include "sandbox/Text.h"

namespace json = boost::json;

namespace quenwick::sandbox {
namespace {

json::object headersOf(const RequestHead& head) {
  json::object headers;
  for (const auto& [name, value] : head.headers) {
    const auto [entry, isNew] = headers.emplace(utf8Text(name), utf8Text(value));
    if (!isNew) entry->value().as_string().append(", ").append(utf8Text(value));
  }
  return headers;
}

json::object record(const Request& request) {
  const RequestHead head(request.head);
  const std::chrono::duration<double> time = request.receivedAt.time_since_epoch();
  json::object result{{"method", utf8Text(head.method)},
                      {"scheme", request.isSecure ? "https" : "http"},
                      {"host", utf8Text(hostOfAuthority(head.header("Host")))},
                      {"path", utf8Text(head.path)},
                      {"query", utf8Text(head.query)},
                      {"headers", headersOf(head)},
                      {"receivedAt", time.count()},
                      {"connection", request.connection}};
  if (!request.body.empty()) {
    const bool isText = isUTF8(request.body);
    result[isText ? "body" : "bodyBase64"] = isText ? request.body : base64(request.body);
  }
  return result;
}

}  // namespace

void Recorder::add(std::shared_ptr<const Request> request) {
  const std::size_t bytes = sizeof(Request) + request->head.size() + request->body.size();
  requests_.add(std::move(request), bytes);
}

std::string Recorder::json() const {
  const auto requests = requests_.entries();
  std::string text = R"({"requests":[)";
  for (const auto& request : requests) {
    if (request != requests.front()) text += ',';
    text += json::serialize(record(*request));
  }
  return text + "]}";
}

}  // namespace quenwick::sandbox
