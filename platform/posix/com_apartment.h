// The calling thread's COM state, as activation needs it.
#pragma once

namespace ze_posix {

// True when the calling thread has initialised COM, or when any thread has entered the
// multithreaded apartment (which every thread then implicitly belongs to).
bool ComUsableOnThisThread();

}  // namespace ze_posix
