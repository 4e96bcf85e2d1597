#include <ZEBPlatform/RunLoop/RunLoopCorePrivate.h>
#include <ZEBPlatform/RunLoop/RunLoopObserver.h>

namespace zeb {

void RunLoopObserver::call(RunLoopActivity activity) noexcept {
  if (isCalling_) return;
  const Ref<RunLoopObserver> alive(this);
  if (const Handler handler = handler_.get()) {
    isCalling_ = true;
    handler(alive, activity);
    isCalling_ = false;
  }
  if (!repeats_) invalidate();
}

void RunLoopObserver::leave(detail::RunLoopCore& core) noexcept { core.modes().remove(*this); }

}  // namespace zeb
