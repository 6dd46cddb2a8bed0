#pragma once

namespace quenwick::platform {

/// By one at a time, or shared by those that only look.
enum class FileLockKind { alone, shared };

/// Locks the open file or folder until `unlockFile`. False where another process does not let go of
/// it for seconds: it may have been stopped. What cannot be locked (no descriptor, a file system
/// without locks) is nobody else's.
bool lockFile(int descriptor, FileLockKind kind = FileLockKind::alone);

/// A child made by `fork` meanwhile does not go on holding it either.
void unlockFile(int descriptor);

}  // namespace quenwick::platform
