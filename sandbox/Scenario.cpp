#include "sandbox/Scenario.h"

#include <boost/json.hpp>

#include "sandbox/AnswerReader.h"
#include "sandbox/JSONNode.h"
#include "sandbox/ScenarioError.h"

namespace quenwick::sandbox {
namespace {

std::vector<JSONNode> elementsOf(const JSONNode& node, std::string_view key) {
  const auto list = node.member(key);
  return list ? list->elements() : std::vector<JSONNode>();
}

}  // namespace

Scenario::Scenario(std::string_view text) {
  try {
    const boost::json::value value = parseJSON(text);
    read(JSONNode(value, "scenario"));
  } catch (const JSONError& error) {
    throw ScenarioError(error.what());
  }
}

void Scenario::read(const JSONNode& root) {
  root.allowOnly({"links", "answers", "certificates", "behavior"});
  for (const JSONNode& link : elementsOf(root, "links")) readLink(link);
  for (const JSONNode& answer : elementsOf(root, "answers")) readSingleAnswer(answer);
  addDefaultEnds();
  if (const auto certificates = root.member("certificates")) {
    for (const auto& [host, fault] : certificates->members()) readCertificate(host, fault);
  }
  if (const auto behavior = root.member("behavior")) readBehavior(*behavior);
}

void Scenario::readLink(const JSONNode& node) {
  node.allowOnly({"link", "chain", "end"});
  const JSONNode link = node.requiredMember("link");
  Address place = readPlace(link);
  links_.push_back(link.text());
  for (const JSONNode& hop : elementsOf(node, "chain")) {
    if (!place.isServed()) hop.refuse("follows a target that no server answers");
    add(hop, place, readHop(hop));
    const JSONNode target = hop.requiredMember("to");
    const auto next = resolve(place, target.text());
    if (!next) target.refuse("names no host");
    place = *next;
    if (!place.host.empty()) hosts_.insert(place.host);
  }
  const auto end = node.member("end");
  if (end && !place.isServed()) end->refuse("follows a target that no server answers");
  if (end)
    add(*end, place, readEnd(*end));
  else if (place.isServed())
    openEnds_.push_back(place);
}

void Scenario::readSingleAnswer(const JSONNode& node) {
  add(node, readPlace(node.requiredMember("at")), readAnswer(node, "at"));
}

void Scenario::readCertificate(const std::string& host, const JSONNode& node) {
  static const std::map<std::string, CertificateFault, std::less<>> faults = {
      {"wrong-host", CertificateFault::wrongHost},
      {"expired", CertificateFault::expired},
      {"not-yet-valid", CertificateFault::notYetValid},
      {"unknown-issuer", CertificateFault::unknownIssuer}};
  const auto address = parseAddress("https://" + host + "/");
  if (!address || hostOfAuthority(host) != address->host) node.refuse("is no host name");
  const auto fault = faults.find(node.text());
  if (fault == faults.end()) {
    node.refuse("must be \"wrong-host\", \"expired\", \"not-yet-valid\" or \"unknown-issuer\"");
  }
  hosts_.insert(address->host);
  certificates_[address->host] = fault->second;
}

void Scenario::readBehavior(const JSONNode& node) {
  behavior_ = readBehaviorTerms(node);
  for (const Address* place : {&behavior_->handshake, &behavior_->events}) {
    const Answer* answer = routes_.find(place->host, place->path);
    if (answer != nullptr) node.refuse("another answer stands at " + place->host + place->path);
    hosts_.insert(place->host);
  }
}

Address Scenario::readPlace(const JSONNode& node) {
  const auto address = parseAddress(node.text());
  if (!address || !address->isServed()) {
    node.refuse("must be \"https://host/path\", \"http://host/path\" or \"/path\"");
  }
  if (!address->host.empty()) hosts_.insert(address->host);
  return *address;
}

void Scenario::add(const JSONNode& node, const Address& address, const Answer& answer) {
  if (routes_.add(address, answer)) return;
  node.refuse("another answer stands at " + address.host + address.path + " already");
}

/// Comes last: a chain may end where another chain, itself included, or an answer stands.
void Scenario::addDefaultEnds() {
  for (const Address& place : openEnds_) {
    if (routes_.find(place.host, place.path) == nullptr) routes_.add(place, defaultEnd());
  }
  openEnds_.clear();
}

}  // namespace quenwick::sandbox
