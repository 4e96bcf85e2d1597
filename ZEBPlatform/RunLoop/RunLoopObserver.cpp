#include <ZEBPlatform/RunLoop/RunLoopObserver.h>

namespace zeb {

void RunLoopObserver::notify(RunLoopActivity activity) noexcept {
  if (isCalling()) return;
  const Ref<RunLoopObserver> alive(this);
  call(alive, activity);
  if (!repeats_) invalidate();
}

}  // namespace zeb
