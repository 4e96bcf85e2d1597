#pragma once

// The module Notifications: the notification centre.

#include <ZEBPlatform/Notifications/NSNotification.h>
#include <ZEBPlatform/Notifications/NSNotificationCenter.h>
