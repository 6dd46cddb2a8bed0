#pragma once

#include <string_view>

namespace quenwick::sandbox {

class JSONNode;

/// Judges the properties that an event of this name carries; false if there is no such event.
/// Throws a `JSONError` that names the field.
bool judgeProperties(std::string_view event, const JSONNode& properties);

}  // namespace quenwick::sandbox
