#pragma once

#include <vector>

#include "quenwick/platform/Executor.h"

namespace quenwick::platform {

/// While it lives, what this thread posts to the pool waits; then the pool has all of it at once,
/// which costs less than one after the other. Of several on a thread the outermost one holds.
class PostsTogether {
 public:
  PostsTogether();
  ~PostsTogether();
  PostsTogether(const PostsTogether&) = delete;
  PostsTogether& operator=(const PostsTogether&) = delete;

  /// Takes the work where one lives on this thread; whether that is so.
  static bool take(Work& work);

 private:
  std::vector<Work> works_;
};

}  // namespace quenwick::platform
