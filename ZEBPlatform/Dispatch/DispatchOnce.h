#pragma once

#include <ZEBPlatform/Memory/FunctionView.h>

#include <mutex>
#include <utility>

namespace zeb {

/// Whether a one-time initialisation has been done; must live as long as the process.
using dispatch_once_t = std::once_flag;

/// Calls the callable if nobody has done so through this predicate; returns when that call is done,
/// whoever made it. If it throws, the next caller tries again. A nil block is nothing to do, and
/// leaves the predicate as it is.
template <class Callable>
void dispatch_once(dispatch_once_t& predicate, Callable&& initialise) {
  if (detail::isNilCallable(initialise)) return;
  std::call_once(predicate, std::forward<Callable>(initialise));
}

}  // namespace zeb
