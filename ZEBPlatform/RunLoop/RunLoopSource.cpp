#include <ZEBPlatform/RunLoop/RunLoopCorePrivate.h>
#include <ZEBPlatform/RunLoop/RunLoopSource.h>

namespace zeb {

void RunLoopSource::signal() {
  isSignalled_.store(true);
  if (const Ref<NSRunLoop> loop = this->loop()) loop->core().lookAround();
}

bool RunLoopSource::perform() noexcept {
  if (isPerforming_ || !isSignalled_.exchange(false)) return false;
  const Block<void()> perform = perform_.get();
  if (!perform) return false;
  isPerforming_ = true;
  perform();
  isPerforming_ = false;
  return true;
}

void RunLoopSource::leave(detail::RunLoopCore& core) noexcept { core.modes().remove(*this); }

}  // namespace zeb
