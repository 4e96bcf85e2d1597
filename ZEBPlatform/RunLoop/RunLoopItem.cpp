#include <ZEBPlatform/RunLoop/RunLoopCorePrivate.h>
#include <ZEBPlatform/RunLoop/RunLoopItem.h>

#include <utility>

namespace zeb {

RunLoopItem::RunLoopItem(Kind kind, std::int64_t order) noexcept : order_(order), kind_(kind) {}
RunLoopItem::~RunLoopItem() = default;

void RunLoopItem::invalidate() {
  if (!isValid_.exchange(false, std::memory_order_acq_rel)) return;
  const Ref<RunLoopItem> alive(this);
  Ref<NSRunLoop> loop;
  {
    const detail::LockGuard guard(lock_);
    loop = std::exchange(loop_, nullptr);
  }
  if (loop) loop->core().remove(*this);
  releaseBlock();
}

Ref<NSRunLoop> RunLoopItem::loop() const {
  const detail::LockGuard guard(lock_);
  return loop_;
}

}  // namespace zeb
