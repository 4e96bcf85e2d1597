#include <ZEBPlatform/RunLoop/RunLoopCorePrivate.h>
#include <ZEBPlatform/RunLoop/RunLoopSource.h>

namespace zeb {

void RunLoopSource::signal() {
  isSignalled_.store(true);
  if (const Ref<NSRunLoop> loop = this->loop()) loop->core().requestPass();
}

}  // namespace zeb
