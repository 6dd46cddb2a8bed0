#include "quenwick/platform/AtomicFile.h"
#include "quenwick/platform/Draft_posix.h"

namespace quenwick::platform {

void writeAtomically(const std::filesystem::path& file, std::string_view bytes) {
  Draft draft(file);
  draft.write(bytes);
  draft.become();
}

}  // namespace quenwick::platform
