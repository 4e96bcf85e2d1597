#include "SignalSource.h"

#include <ZEBPlatform/RunLoop/NSRunLoop.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

using namespace zeb;

Ref<RunLoopDescriptorSource> handleSignals(std::initializer_list<int> signals,
                                           Block<void(int signal)> handler) {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : signals) sigaddset(&set, signal);
  sigprocmask(SIG_BLOCK, &set, nullptr);

  // It is never closed, because the process needs it until its end.
  const int descriptor = signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC);
  const auto source = RunLoopDescriptorSource::source(
      descriptor, DescriptorReadable,
      [descriptor, handler](const Ref<RunLoopDescriptorSource>&, std::uint32_t) {
        signalfd_siginfo info;
        while (read(descriptor, &info, sizeof info) == sizeof info) {
          handler(static_cast<int>(info.ssi_signo));
        }
      });
  NSRunLoop::currentRunLoop()->addDescriptorSource(source, NSRunLoopCommonModes);
  return source;
}
