#pragma once

#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/RunLoop/RunLoopDescriptorSource.h>

#include <initializer_list>

/// Handles the signals as events of the calling thread's run loop, so that they interrupt nothing.
/// Call it once, before other threads are started, because these inherit the signals that it
/// blocks.
zeb::Ref<zeb::RunLoopDescriptorSource> handleSignals(std::initializer_list<int> signals,
                                                     zeb::Block<void(int signal)> handler);
