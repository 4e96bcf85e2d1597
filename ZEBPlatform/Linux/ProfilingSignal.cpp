#include <ZEBPlatform/Linux/detail/ProfilingSignal.h>

#include <signal.h>
#include <ucontext.h>

#include <atomic>
#include <cerrno>

namespace zeb {

namespace {

std::atomic<ProfilingHandler> installedHandler{nullptr};

void callHandler(int, siginfo_t*, void* context) {
  const int error = errno;
  const ProfilingHandler handler = installedHandler.load(std::memory_order_acquire);
  if (handler) handler(context);
  errno = error;
}

void setSimpleAction(void (*action)(int)) noexcept {
  struct sigaction simple{};
  simple.sa_handler = action;
  sigaction(SIGPROF, &simple, nullptr);
}

}  // namespace

const int profilingSignal = SIGPROF;

void rehearseProfilingHandler(ProfilingHandler handler) noexcept {
  installedHandler.store(handler, std::memory_order_release);
  ucontext_t context;
  getcontext(&context);
  callHandler(SIGPROF, nullptr, &context);
}

void installProfilingHandler(ProfilingHandler handler) noexcept {
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
