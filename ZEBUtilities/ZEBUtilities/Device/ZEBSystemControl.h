#pragma once

#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/NSString.h>

#include <cstdint>

namespace zeb {

// Values of system controls, by the numbers and names that Linux/SystemControl.h lists.
//
// On failure the functions return nil or 0 and an error of NSPOSIXErrorDomain with the system's
// error number, such as ENOENT if there is no such control. The code is EINVAL (22) if the value
// has the wrong form: a text that is empty or no UTF-8, or an integer that is no number. An integer
// that needs more than four bytes fails with ENOMEM. All functions may be called from any thread.

/// With type 0 the control has the name `name`, and `subtype` is ignored; a nil name, or one that
/// contains unpaired surrogates, counts as empty. Otherwise the control has the numbers `type` and
/// `subtype`, and `name` is ignored.
NSString ZEBSystemControlRetrieveString(int type, int subtype, const NSString& name,
                                        NSError* error = nullptr);
NSString ZEBSystemControlRetrieveStringByControlType(int type, int subtype,
                                                     NSError* error = nullptr);
NSString ZEBSystemControlRetrieveStringByName(const NSString& name, NSError* error = nullptr);

std::int32_t ZEBSystemControlRetrieveIntByControlType(int type, int subtype,
                                                      NSError* error = nullptr);
std::int32_t ZEBSystemControlRetrieveIntByName(const NSString& name, NSError* error = nullptr);

}  // namespace zeb
