#pragma once

#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Memory/Block.h>

#include "Steps.h"

namespace zeb::timeline {

/// Lets the data arrive piece by piece, as from a network, while a line on the screen tells how far it is;
/// then has it parsed in the background and calls `use` with the document, on the main queue. Returns when
/// all that is done: the main thread runs its run loop meanwhile. What `use` throws, and the parser's error,
/// are thrown from here. Main thread.
void receive(const NSData& data, const Screen& screen, Steps& steps,
             const Block<void(const Value& document)>& use);

}  // namespace zeb::timeline
