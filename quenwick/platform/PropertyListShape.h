#pragma once

#include <string_view>

namespace quenwick::platform {

/// Whether the bytes are a binary property list that a reader can unfold: no container nests
/// deeper than 64 levels or in itself, and all of it together, what is referred to several times
/// counted as often, is at most 100,000 objects. Says nothing else about its soundness.
bool isBinaryPropertyListOfBoundedShape(std::string_view bytes);

}  // namespace quenwick::platform
