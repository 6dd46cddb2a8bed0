#pragma once

#include <chrono>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "sandbox/Address.h"
#include "sandbox/Fault.h"

namespace quenwick::sandbox {

/// What a scenario says of behaviour: who may verify, where, and where events go.
struct BehaviorTerms {
  /// The API keys, each with the bundle identifiers that it belongs to; with none it fits all.
  std::map<std::string, std::set<std::string>> keys = {};
  /// The base URL of the handshake, as written, and where the handshake stands.
  std::string service = "https://api.shop.example";
  Address handshake = {};
  /// The URL that the handshake names, as written, and where it stands.
  std::string endpoint = "https://events.shop.example/v1/events";
  Address events = {};
  /// How far an event's timestamp may be from now.
  std::chrono::seconds timestampTolerance{3600};
  std::map<BehaviorPart, std::vector<Fault>> faults = {{BehaviorPart::verification, {}},
                                                       {BehaviorPart::events, {}}};

  std::vector<std::string> keyTexts() const;
};

BehaviorTerms readBehaviorTerms(const JSONNode& node);

}  // namespace quenwick::sandbox
