#pragma once

// Everything that both libraries offer. Larger programs include the module headers they need, or
// single headers.

#include <ZEBPlatform/AddressBook.h>
#include <ZEBPlatform/Bundle.h>
#include <ZEBPlatform/Dispatch.h>
#include <ZEBPlatform/Foundation.h>
#include <ZEBPlatform/Geometry.h>
#include <ZEBPlatform/Json.h>
#include <ZEBPlatform/KeyedCoding.h>
#include <ZEBPlatform/Linux.h>
#include <ZEBPlatform/Logging.h>
#include <ZEBPlatform/Memory.h>
#include <ZEBPlatform/Notifications.h>
#include <ZEBPlatform/Operations.h>
#include <ZEBPlatform/Process.h>
#include <ZEBPlatform/RunLoop.h>
#include <ZEBPlatform/Runtime.h>
#include <ZEBPlatform/Security.h>
#include <ZEBPlatform/Text.h>
#include <ZEBPlatform/Url.h>
#include <ZEBUtilities/Bundle.h>
#include <ZEBUtilities/Callbacks.h>
#include <ZEBUtilities/Classes.h>
#include <ZEBUtilities/Coding.h>
#include <ZEBUtilities/Collections.h>
#include <ZEBUtilities/Constants.h>
#include <ZEBUtilities/Contacts.h>
#include <ZEBUtilities/Dates.h>
#include <ZEBUtilities/Device.h>
#include <ZEBUtilities/Diagnostics.h>
#include <ZEBUtilities/Encodings.h>
#include <ZEBUtilities/Graphics.h>
#include <ZEBUtilities/IDN.h>
#include <ZEBUtilities/JSON.h>
#include <ZEBUtilities/Keychain.h>
#include <ZEBUtilities/LocalizedDates.h>
#include <ZEBUtilities/Observation.h>
#include <ZEBUtilities/Ranges.h>
#include <ZEBUtilities/Tasks.h>
#include <ZEBUtilities/Text.h>
#include <ZEBUtilities/Timing.h>
#include <ZEBUtilities/URLs.h>
