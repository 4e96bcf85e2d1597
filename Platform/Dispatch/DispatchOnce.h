#pragma once

#include <mutex>
#include <utility>

namespace zeb {

/// Whether a one-time initialisation has been done; must live as long as the process.
using dispatch_once_t = std::once_flag;

/// Calls the callable if nobody has done so through this predicate; returns when that call is done,
/// whoever made it. If it throws, the next caller tries again.
template <class Callable>
void dispatch_once(dispatch_once_t& predicate, Callable&& initialise) {
  std::call_once(predicate, std::forward<Callable>(initialise));
}

}  // namespace zeb
