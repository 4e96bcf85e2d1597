#pragma once

namespace zeb {

/// The mode that loops run in unless they are told otherwise.
extern const char* const NSDefaultRunLoopMode;
/// Not a mode to run in but the name of a set of modes, which has the default mode from the start
/// (see `NSRunLoop::addCommonMode`): what is added to it is in all of them, later members too.
extern const char* const NSRunLoopCommonModes;

}  // namespace zeb
