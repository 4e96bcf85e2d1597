#include <ZEBPlatform/RunLoop/RunLoopCorePrivate.h>
#include <ZEBPlatform/RunLoop/RunLoopItem.h>

#include <utility>

namespace zeb {

RunLoopItem::RunLoopItem() noexcept = default;
RunLoopItem::~RunLoopItem() = default;

void RunLoopItem::invalidate() {
  if (!isValid_.exchange(false, std::memory_order_acq_rel)) return;
  const Ref<RunLoopItem> alive(this);
  Ref<NSRunLoop> loop;
  {
    std::lock_guard guard(mutex_);
    loop = std::exchange(loop_, nullptr);
  }
  if (loop) leave(loop->core());
  releaseBlock();
}

Ref<NSRunLoop> RunLoopItem::loop() const {
  std::lock_guard guard(mutex_);
  return loop_;
}

}  // namespace zeb
