#include "sandbox/Behavior.h"

#include <boost/json.hpp>

#include "sandbox/EventJudge.h"
#include "sandbox/JSONNode.h"
#include "sandbox/Recorder.h"
#include "sandbox/Refusal.h"
#include "sandbox/RequestHead.h"
#include "sandbox/RequestJudge.h"
#include "sandbox/Text.h"

namespace json = boost::json;

namespace quenwick::sandbox {
namespace {

Answer success(const json::object& object) { return jsonAnswer(200, json::serialize(object)); }

}  // namespace

Behavior::Behavior(BehaviorTerms terms, std::string_view secret)
    : terms_(std::move(terms)),
      credentials_(secret, terms_.keyTexts()),
      requestIDPrefix_(drawHexadecimal(8) + "-") {
  for (const auto& [part, faults] : terms_.faults) faults_[part].replace(faults);
}

void Behavior::setFaults(BehaviorPart part, std::string_view text) {
  const json::value value = parseJSON(text);
  faults_.at(part).replace(readFaults(JSONNode(value, "faults"), part));
}

std::string Behavior::faults() const {
  json::object parts;
  for (const auto& [part, faults] : faults_) parts[nameOf(part)] = faults.json();
  return json::serialize(parts);
}

std::optional<Answer> Behavior::answer(const Request& request, const RequestHead& head) {
  const auto part = partOf(head);
  if (!part) return std::nullopt;
  try {
    return *part == BehaviorPart::verification ? verify(request, head) : acknowledge(request, head);
  } catch (const JSONError& error) {
    return refuse(*part, {.field = error.place(), .reason = error.why()}, request);
  } catch (const Refusal& refusal) {
    return refuse(*part, refusal, request);
  }
}

/// 422 carries its reason as "message", the others as "error".
Answer Behavior::refuse(BehaviorPart part, const Refusal& refusal, const Request& request) {
  journal_.addRefusal(part, refusal, request.body, request.receivedAt);
  const std::string reason = utf8Text(refusal.field + ": " + refusal.reason);
  const json::object body{{refusal.status == 422 ? "message" : "error", reason}};
  return jsonAnswer(refusal.status, json::serialize(body));
}

/// Everything at the host of events is judged, so that a wrong path is refused as one.
std::optional<BehaviorPart> Behavior::partOf(const RequestHead& head) const {
  const std::string host = hostOfAuthority(head.header("Host"));
  if (host == terms_.handshake.host && head.path == terms_.handshake.path) {
    return BehaviorPart::verification;
  }
  if (host == terms_.events.host) return BehaviorPart::events;
  return std::nullopt;
}

Answer Behavior::verify(const Request& request, const RequestHead& head) {
  judgePath(head, terms_.handshake.path);
  const json::value value = judgeJSONPost(head, request.body);
  const JSONNode body(value, "body");
  judgeKey(body);
  const Credential& credential = credentials_.of(body.requiredMember("api_key").text());
  const json::object data{{"behavioral_endpoint_url", terms_.endpoint},
                          {"behavioral_endpoint_api_token", credential.token},
                          {"behavioral_endpoint_api_token_identifier", credential.identifier}};
  Answer right = success({{"data", data}});
  const auto fault = faults_.at(BehaviorPart::verification).next();
  return fault ? fault->over(std::move(right)) : right;
}

/// A key that is unknown is forbidden: 401 would ask the client to renew a credential, and would
/// keep the reason from its log.
void Behavior::judgeKey(const JSONNode& body) const {
  body.require({"bundle_identifier", "api_key"});
  const JSONNode bundle = body.requiredMember("bundle_identifier");
  if (bundle.text().empty()) bundle.refuse("must not be empty");
  const auto key = terms_.keys.find(body.requiredMember("api_key").text());
  if (key == terms_.keys.end()) {
    throw Refusal{.status = 403, .field = "api_key", .reason = "is not known"};
  }
  if (!key->second.empty() && !key->second.contains(bundle.text())) {
    throw Refusal{.status = 403, .field = "bundle_identifier", .reason = "has another API key"};
  }
}

Answer Behavior::acknowledge(const Request& request, const RequestHead& head) {
  if (!credentials_.accept(head.header("Authorization"))) {
    throw Refusal{.status = 401, .field = "Authorization", .reason = "is no credential in use"};
  }
  judgePath(head, terms_.events.path);
  const json::value value = judgeJSONPost(head, request.body);
  judgeEvent(JSONNode(value, "body"),
             {.now = request.receivedAt, .tolerance = terms_.timestampTolerance});
  const std::string requestID = requestIDPrefix_ + std::to_string(++requestCount_);
  Answer right = success({{"message", "accepted"}, {"request_id", requestID}});
  const auto fault = faults_.at(BehaviorPart::events).next();
  if (!fault || fault->isHarmless()) {
    journal_.addEvent(request.body, requestID, request.receivedAt);
  }
  return fault ? fault->over(std::move(right)) : right;
}

}  // namespace quenwick::sandbox
