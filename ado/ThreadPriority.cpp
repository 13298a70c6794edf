#include "ado/ThreadPriority.h"

#if defined(_WIN32)
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#else
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#endif

namespace kitra::ado {

bool RunBelowOtherThreads() {
#if defined(_WIN32)
    return SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_BELOW_NORMAL) != 0;
#elif defined(__linux__)
    // Five steps of niceness: under contention such a thread gets about a third of the share
    // of one at the process's own level. On Linux a thread id given as a process is that
    // thread alone.
    constexpr int kSteps = 5;
    const auto thread = static_cast<id_t>(::gettid());
    errno = 0;
    const int now = ::getpriority(PRIO_PROCESS, thread);
    if (errno != 0 || now >= 19) return false;
    return ::setpriority(PRIO_PROCESS, thread, std::min(now + kSteps, 19)) == 0;
#else
    return false;
#endif
}

}  // namespace kitra::ado
