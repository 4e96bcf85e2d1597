#pragma once

#include <ZEBPlatform/RunLoop/RunLoopItem.h>

namespace zeb {

/// An input that never has anything to say: it keeps a run loop running which otherwise would have nothing to
/// wait for but blocks from other threads.
class NSPort final : public RunLoopItem {
 public:
  static Ref<NSPort> port() { return makeRef<NSPort>(); }

 private:
  void leave(detail::RunLoopCore& core) noexcept override;
};

}  // namespace zeb
