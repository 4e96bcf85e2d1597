#include <ZEBPlatform/Dispatch/ThreadPoolPrivate.h>
#include <ZEBPlatform/Dispatch/detail/BlockingWait.h>

namespace zeb::detail {

void waitUntilOpen(ThreadGate& gate) noexcept {
  if (gate.spinUntilOpen()) return;
  const ThreadPool::BlockingScope blocking;
  gate.sleepUntilOpen();
}

}  // namespace zeb::detail
