#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/RunLoop/NSThread.h>

namespace zeb {

/// The key of the associated object of a thread that is its sampler.
extern const void* const kTraceSampler;

// For a nil thread these do nothing and return nil.

/// Lets other threads see the thread's stack: attaches a new `ZEBStackTraceSampler` if none is
/// attached, or detaches the attached one. It has an effect only when the thread calls it for
/// itself. At most one thread of a process should be enabled at a time, see
/// ZEBStackTraceSampler.h.
void zeb_setCallStackPeekEnabled(const Ref<NSThread>& thread, bool enabled);

/// The stack of the thread, as its sampler returns it (`ZEBStackTraceSampler::callstackSymbols`).
/// Waits until the thread runs its run loop. Nil if it is not enabled. Any thread.
NSArray zeb_callStackSymbols(const Ref<NSThread>& thread);

/// Calls the block on the thread when its run loop runs in a common mode. If the thread ends before
/// that, the block is released without a call. A nil block does nothing. Any thread.
void zeb_performBlockAsync(const Ref<NSThread>& thread, Block<void()> block);

}  // namespace zeb
