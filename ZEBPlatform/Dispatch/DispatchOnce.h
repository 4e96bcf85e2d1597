#pragma once

#include <ZEBPlatform/Memory/FunctionView.h>

#include <mutex>
#include <utility>

namespace zeb {

/// Records whether a one-time initialisation has been done. It must live as long as the process.
using dispatch_once_t = std::once_flag;

/// Calls the callable once for each predicate. Every caller returns after that one call has ended,
/// and sees its effects. If the callable throws, the exception goes to its caller and the next
/// caller tries again. A nil block does nothing and leaves the predicate as it is. Any thread.
template <class Callable>
void dispatch_once(dispatch_once_t& predicate, Callable&& initialise) {
  if (detail::isNilCallable(initialise)) return;
  std::call_once(predicate, std::forward<Callable>(initialise));
}

}  // namespace zeb
