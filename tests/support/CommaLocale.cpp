#include "tests/support/CommaLocale.h"

#include <clocale>
#include <cstdlib>
#include <locale>
#include <string>

#include "tests/support/Program.h"

/// The C library loses the list of folders that it makes of LOCPATH.
extern "C" const char* __lsan_default_suppressions() { return "leak:argz_add_sep\n"; }

namespace quenwick::tests {

bool setCommaLocale(const std::filesystem::path& folder) {
  constexpr auto kName = "de_DE.UTF-8";
  auto made =
      runProgram({"localedef", "--inputfile=de_DE", "--charmap=UTF-8", (folder / kName).string()});
  if (made.exitCode != 0) return false;
  setenv("LOCPATH", folder.c_str(), 1);
  if (!setlocale(LC_ALL, kName)) return false;
  std::locale::global(std::locale(kName));
  return std::to_string(1.5) == "1,500000";
}

}  // namespace quenwick::tests
