#pragma once

#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Memory/Block.h>

#include "Steps.h"

namespace zeb::timeline {

/// Delivers the data piece by piece, as from a network, while a line on the screen shows the
/// progress. Then parses the data in the background and calls `use` with the document, on the main
/// queue. Runs the main thread's run loop until everything is done. Throws the exceptions of `use`
/// and the parser's error. Main thread only.
void receive(const NSData& data, const Screen& screen, Steps& steps,
             const Block<void(const Value& document)>& use);

}  // namespace zeb::timeline
