// Runs a target over the files of a folder, as every build does; libFuzzer makes new ones of them.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/Target.h"

int main(int count, char** words) {
  int inputs = 0;
  for (int i = 1; i < count; ++i) {
    for (const auto& file : std::filesystem::directory_iterator(words[i])) {
      std::ifstream stream(file.path(), std::ios::binary);
      const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
      std::fprintf(stderr, "%s\n", file.path().c_str());
      LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
      ++inputs;
    }
  }
  std::printf("%d inputs\n", inputs);
  return inputs > 0 ? 0 : 1;
}
