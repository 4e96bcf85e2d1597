#pragma once

namespace zeb {

/// Registers all classes of this library that the dynamic runtime finds by name; docs/runtime.md
/// lists them. Programs need not call it: the first look-up of an unknown name (`objc_lookUpClass`)
/// does. Further calls do nothing. Any thread.
void ZEBRegisterClasses();

}  // namespace zeb
