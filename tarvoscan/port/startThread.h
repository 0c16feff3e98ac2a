#pragma once

#include <signal.h>

#include <thread>

namespace tarvo {

// What a thread raises by its own fault; blocked, these would pass by the host's handlers.
inline constexpr int OWN_FAULTS[] = {SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV, SIGSYS, SIGTRAP};

/// Starts a thread in which no signal of the host is handled.
template <class tFunction>
std::thread startThread(tFunction function) {
  sigset_t blocked, before;
  sigfillset(&blocked);
  for (const int fault : OWN_FAULTS) sigdelset(&blocked, fault);
  pthread_sigmask(SIG_SETMASK, &blocked, &before);
  try {
    std::thread thread(function);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return thread;
  } catch (...) {
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    throw;
  }
}

}  // namespace tarvo
