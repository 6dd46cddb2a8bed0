#include "sandbox/Queries.h"

#include <boost/json.hpp>

#include "sandbox/JSONNode.h"
#include "sandbox/RequestHead.h"
#include "sandbox/Service.h"

namespace json = boost::json;

namespace quenwick::sandbox {
namespace {

constexpr std::string_view kQueries = "/_sandbox/";
constexpr std::string_view kFaults = "faults/";

Answer noSuchQuery() {
  return {
      .status = 404, .type = "text/plain; charset=utf-8", .body = Body("There is no such query\n")};
}

Answer read(Service& service, std::string_view what) {
  if (what == "requests") return jsonAnswer(200, service.recorder.json());
  if (what == "links") {
    const json::object links{{"links", json::value_from(service.scenario.links())}};
    return jsonAnswer(200, json::serialize(links));
  }
  if (!service.behavior) return noSuchQuery();
  if (what == "events") return jsonAnswer(200, service.behavior->journal().events());
  if (what == "refusals") return jsonAnswer(200, service.behavior->journal().refusals());
  if (what == "faults") return jsonAnswer(200, service.behavior->faults());
  return noSuchQuery();
}

Answer forget(Service& service, std::string_view what) {
  if (what == "requests")
    service.recorder.forget();
  else if (service.behavior && (what == "events" || what == "refusals"))
    service.behavior->journal().forget();
  else
    return noSuchQuery();
  return {.status = 204};
}

Answer setFaults(Service& service, std::string_view part, const std::string& text) {
  const auto found = behaviorPart(part);
  if (!found || !service.behavior) return noSuchQuery();
  try {
    service.behavior->setFaults(*found, text);
  } catch (const JSONError& error) {
    return jsonAnswer(422, json::serialize(json::object{{"message", error.what()}}));
  }
  return {.status = 204};
}

}  // namespace

bool isQuery(const RequestHead& head) { return head.path.starts_with(kQueries); }

Answer answerQuery(Service& service, const RequestHead& head, const std::string& body) {
  const std::string_view what = head.path.substr(kQueries.size());
  const bool isDelete = head.method == "DELETE";
  if (what.starts_with(kFaults) && (isDelete || head.method == "PUT")) {
    return setFaults(service, what.substr(kFaults.size()), isDelete ? "[]" : body);
  }
  if (isDelete) return forget(service, what);
  if (head.method == "GET" || head.method == "HEAD") return read(service, what);
  return noSuchQuery();
}

}  // namespace quenwick::sandbox
