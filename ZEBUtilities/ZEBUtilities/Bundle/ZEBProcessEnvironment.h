#pragma once

/// The kind of this process, according to the main bundle's Info.plist. Each function determines
/// its result at the first call and keeps it. Any thread.
namespace zeb {

/// Whether this is an extension of another application: whether "NSExtension" is a dictionary.
bool ZEBAmIRunningInAnExtension();

/// The boolean value of "VUITTesting"; false without it.
bool ZEBAmIBeingUITested();

/// Deliberately the same as `ZEBAmIBeingUITested()`.
bool ZEBAmIBeingTested();

}  // namespace zeb
