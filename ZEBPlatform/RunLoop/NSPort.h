#pragma once

#include <ZEBPlatform/RunLoop/RunLoopItem.h>

namespace zeb {

/// An input that never has work: it keeps a run loop running that otherwise could wait only for
/// blocks from other threads.
class NSPort final : public RunLoopItem {
 public:
  NSPort() noexcept : RunLoopItem(Kind::port) {}
  [[nodiscard]] static Ref<NSPort> port() { return makeRef<NSPort>(); }
};

}  // namespace zeb
