#pragma once

namespace zeb {

/// Registers all classes of this library that the dynamic runtime knows by name; docs/runtime.md lists
/// them. Nobody needs to call it: the first search for a name (`objc_lookUpClass`) that is not known yet
/// does. Further calls change nothing. Any thread.
void ZEBRegisterClasses();

}  // namespace zeb
