#include "quenwick/client/BehaviorRegistration.h"

#include "quenwick/API/Repository/BehavioralVerificationRepository.h"
#include "quenwick/API/Stack/APIKeyError.h"
#include "quenwick/platform/Error.h"

namespace quenwick {
namespace {

std::string reasonOf(const std::exception_ptr& failure) {
  using Errors = BehavioralVerificationRepository::Errors;
  try {
    std::rethrow_exception(failure);
  } catch (const APIKeyError&) {
    return "API Key Not Found";
  } catch (const Errors& error) {
    bool isEndpoint = error.code() == Errors::Code::coercingEndpointURLFailed;
    return isEndpoint ? "Could not coerce the endpoint into a URL" : error.localizedDescription();
  } catch (...) {
    return platform::errorFrom(failure)->localizedDescription();
  }
}

}  // namespace

std::string verificationFailureLine(const std::exception_ptr& failure) {
  return "Behavioral Verification failed: " + reasonOf(failure);
}

}  // namespace quenwick
