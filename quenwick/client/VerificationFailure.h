#pragma once

#include <exception>
#include <string>
#include <string_view>

namespace quenwick {

/// The line that is logged where the verification of the key failed with the error. What the
/// service answered is part of it, without the key and the credential, should the answer hold them,
/// and cut to some thousand bytes.
std::string verificationFailureLine(const std::exception_ptr& failure, std::string_view apiKey);

}  // namespace quenwick
