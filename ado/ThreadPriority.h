#pragma once
// The scheduling priority of a helper thread: threads whose work only has to stay ahead of
// another thread run below it, so that on a busy machine the thread that waits for their work
// is the one that gets the processor.

namespace kitra::ado {

// Lowers the calling thread's priority below the process's other threads; false where the
// system refuses, and the thread then simply runs as before.
bool RunBelowOtherThreads();

}  // namespace kitra::ado
