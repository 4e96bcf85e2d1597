#pragma once

#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/RunLoop/RunLoopDescriptorSource.h>

#include <initializer_list>

/// Has the signals handled on the calling thread's run loop, as events among others, instead of interrupting
/// whatever runs. To be made once, before other threads are started: they inherit what is blocked here.
zeb::Ref<zeb::RunLoopDescriptorSource> handleSignals(std::initializer_list<int> signals,
                                                     zeb::Block<void(int signal)> handler);
