#pragma once

#include <ZEBPlatform/Text/NSTimeZone.h>
#include <ZEBPlatform/Text/TimeZoneDatabasePrivate.h>

#include <memory>

namespace zeb::detail {

// The process's knowledge of the machine's zone. Any thread.

std::shared_ptr<const TimeZoneDatabase> timeZoneDatabase();

Ref<NSTimeZone> systemTimeZone();
void forgetSystemTimeZone();
/// Finds it out again. The notification is posted by the caller.
void refreshSystemTimeZone();

Ref<NSTimeZone> defaultTimeZone();
void setDefaultTimeZone(Ref<NSTimeZone> timeZone);

/// For tests: uses other files from now on, and watches them from the next use of the system's zone
/// on. A thread that watches the previous ones goes on without effect.
void setTimeZoneFiles(TimeZoneFiles files);

}  // namespace zeb::detail
