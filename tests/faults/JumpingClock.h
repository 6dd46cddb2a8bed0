#pragma once

namespace quenwick::tests {

/// From now on the process's wall clock is ahead of the machine's by the seconds that the file
/// holds, an integer of 64 bits of this machine; whoever writes there has the clock jump.
void followClock(const char* file);

}  // namespace quenwick::tests
