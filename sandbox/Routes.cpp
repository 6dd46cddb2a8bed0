#include "sandbox/Routes.h"

namespace quenwick::sandbox {

bool Routes::add(const Address& address, const Answer& answer) {
  return answers_[address.host].try_emplace(address.path, answer).second;
}

const Answer* Routes::find(std::string_view host, std::string_view path) const {
  const Answer* answer = findAt(host, path);
  return answer != nullptr ? answer : findAt("", path);
}

const Answer* Routes::findAt(std::string_view host, std::string_view path) const {
  const auto paths = answers_.find(host);
  if (paths == answers_.end()) return nullptr;
  const auto answer = paths->second.find(path);
  return answer == paths->second.end() ? nullptr : &answer->second;
}

}  // namespace quenwick::sandbox
