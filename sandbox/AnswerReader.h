#pragma once

#include "sandbox/Answer.h"

namespace quenwick::sandbox {

class JSONNode;

/// Reads a hop of a chain: a redirect to `to`, which is sent as it is written.
Answer readHop(const JSONNode& node);

/// Reads the end of a chain: by default status 200 and a small page.
Answer readEnd(const JSONNode& node);

/// Reads an answer outside of chains, which may have a key of its own.
Answer readAnswer(const JSONNode& node, std::string_view ownKey);

/// What the last target of a chain answers when the scenario says nothing of it.
Answer defaultEnd();

}  // namespace quenwick::sandbox
