#pragma once

/// What kind of process this is, by the main bundle's Info.plist. Each answer is found once per process, at
/// the first call, and stays. Any thread.
namespace zeb {

/// Whether "NSExtension" holds a dictionary: whether this is an extension of another application.
bool ZEBAmIRunningInAnExtension();

/// The boolean value of "VUITTesting"; false without it.
bool ZEBAmIBeingUITested();

/// Deliberately the same as `ZEBAmIBeingUITested()`.
bool ZEBAmIBeingTested();

}  // namespace zeb
