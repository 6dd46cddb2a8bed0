#pragma once

#include "sandbox/Answer.h"

namespace quenwick::sandbox {

class ScenarioNode;

/// Reads a hop of a chain: a redirect to `to`, which is sent as it is written.
Answer readHop(const ScenarioNode& node);

/// Reads the end of a chain: by default status 200 and a small page.
Answer readEnd(const ScenarioNode& node);

/// Reads an answer outside of chains, which also says where it stands ("at").
Answer readAnswer(const ScenarioNode& node);

/// What the last target of a chain answers when the scenario says nothing of it.
Answer defaultEnd();

}  // namespace quenwick::sandbox
