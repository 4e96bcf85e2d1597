#include <ZEBUtilities/ZEBSafeOperation.h>

namespace zeb {

bool zeb_isCompletionBlockNotNilledBugPresent() noexcept { return false; }

}  // namespace zeb
