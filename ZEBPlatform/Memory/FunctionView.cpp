#include <ZEBPlatform/Linux/detail/Console.h>
#include <ZEBPlatform/Memory/FunctionView.h>

namespace zeb::detail {

void stopForNilCall() noexcept { fatal("A nil block was called."); }

}  // namespace zeb::detail
