#pragma once

#include <exception>
#include <string>

namespace quenwick {

/// The line that is logged where a verification failed with the error.
std::string verificationFailureLine(const std::exception_ptr& failure);

}  // namespace quenwick
