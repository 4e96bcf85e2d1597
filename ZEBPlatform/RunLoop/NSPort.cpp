#include <ZEBPlatform/RunLoop/NSPort.h>
#include <ZEBPlatform/RunLoop/RunLoopCorePrivate.h>

namespace zeb {

void NSPort::leave(detail::RunLoopCore& core) noexcept { core.modes().remove(*this); }

}  // namespace zeb
