#pragma once

#include <string>

#include "sandbox/Answer.h"

namespace quenwick::sandbox {

struct RequestHead;
struct Service;

/// Whether the request asks about the sandbox itself: such a one is answered but not recorded.
bool isQuery(const RequestHead& head);

/// Answers questions about what was received, and takes faults on demand.
Answer answerQuery(Service& service, const RequestHead& head, const std::string& body);

}  // namespace quenwick::sandbox
