#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace quenwick::tests {

/// The bytes of the file; none where there is no file.
inline std::string contents(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace quenwick::tests
