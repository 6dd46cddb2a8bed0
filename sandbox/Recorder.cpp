#include "sandbox/Recorder.h"

#include <boost/json.hpp>

#include "sandbox/Address.h"
#include "sandbox/RequestHead.h"
#include "sandbox/Text.h"

namespace json = boost::json;

namespace quenwick::sandbox {
namespace {

constexpr std::size_t kMostRequests = 100'000;
constexpr std::size_t kMostBytes = 256U << 20U;

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
                      {"receivedAt", time.count()}};
  if (!request.body.empty()) {
    const bool isText = isUTF8(request.body);
    result[isText ? "body" : "bodyBase64"] = isText ? request.body : base64(request.body);
  }
  return result;
}

}  // namespace

std::size_t Recorder::size(const Request& request) {
  return sizeof(Request) + request.head.size() + request.body.size();
}

void Recorder::add(Request request) {
  auto kept = std::make_shared<const Request>(std::move(request));
  std::shared_ptr<const Request> dropped;
  const std::lock_guard lock(mutex_);
  bytes_ += size(*kept);
  requests_.push_back(std::move(kept));
  while (requests_.size() > kMostRequests || (bytes_ > kMostBytes && requests_.size() > 1)) {
    dropped = std::move(requests_.front());
    bytes_ -= size(*dropped);
    requests_.pop_front();
  }
}

void Recorder::forget() {
  std::deque<std::shared_ptr<const Request>> dropped;
  const std::lock_guard lock(mutex_);
  dropped.swap(requests_);
  bytes_ = 0;
}

std::string Recorder::json() const {
  std::deque<std::shared_ptr<const Request>> requests;
  {
    const std::lock_guard lock(mutex_);
    requests = requests_;
  }
  std::string text = R"({"requests":[)";
  for (const auto& request : requests) {
    if (request != requests.front()) text += ',';
    text += json::serialize(record(*request));
  }
  return text + "]}";
}

}  // namespace quenwick::sandbox
