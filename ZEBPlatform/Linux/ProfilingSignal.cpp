#include <ZEBPlatform/Linux/detail/ProfilingSignal.h>

#include <signal.h>

#include <atomic>
#include <cerrno>

namespace zeb {

namespace {

std::atomic<void (*)()> installedHandler{nullptr};

void callHandler(int, siginfo_t*, void*) {
  const int error = errno;
  if (void (*const handler)() = installedHandler.load(std::memory_order_acquire)) handler();
  errno = error;
}

void setSimpleAction(void (*action)(int)) noexcept {
  struct sigaction simple{};
  simple.sa_handler = action;
  sigaction(SIGPROF, &simple, nullptr);
}

}  // namespace

const int profilingSignal = SIGPROF;

void rehearseProfilingHandler(void (*handler)()) noexcept {
  installedHandler.store(handler, std::memory_order_release);
  callHandler(SIGPROF, nullptr, nullptr);
}

void installProfilingHandler(void (*handler)()) noexcept {
  installedHandler.store(handler, std::memory_order_release);
  struct sigaction action{};
  action.sa_sigaction = &callHandler;
  // SA_RESTART is deliberate: interrupted code that does not expect EINTR would fail without it.
  action.sa_flags = SA_SIGINFO | SA_RESTART;
  sigfillset(&action.sa_mask);
  sigaction(SIGPROF, &action, nullptr);
}

bool isProfilingHandlerInstalled() noexcept {
  struct sigaction action{};
  return sigaction(SIGPROF, nullptr, &action) == 0 && (action.sa_flags & SA_SIGINFO) &&
         action.sa_sigaction == &callHandler;
}

void restoreDefaultProfilingAction() noexcept {
  setSimpleAction(SIG_IGN);  // drops pending signals
  setSimpleAction(SIG_DFL);
}

}  // namespace zeb
