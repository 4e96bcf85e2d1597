#pragma once

namespace zeb {

/// The mode that loops run in unless they are told otherwise.
extern const char* const NSDefaultRunLoopMode;
/// Not a mode to run in but the name of a set of modes, which contains the default mode from the
/// start (see `NSRunLoop::addCommonMode`): an item that is added to it is in all modes of the set,
/// also in those that join it later.
extern const char* const NSRunLoopCommonModes;

}  // namespace zeb
