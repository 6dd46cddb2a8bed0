#pragma once

#include <fstream>
#include <stdexcept>
#include <string>

namespace quenwick::bench {

/// The field of this process's status (VmRSS, VmHWM, RssAnon), in bytes.
inline double statusBytes(const std::string& field) {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.starts_with(field + ":")) return std::stod(line.substr(field.size() + 1)) * 1024;
  }
  throw std::runtime_error("the system does not say " + field);
}

}  // namespace quenwick::bench
