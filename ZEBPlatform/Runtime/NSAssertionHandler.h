#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Runtime/SEL.h>

#include <cstdint>
#include <string_view>

namespace zeb {

/// The name of the exception that a failed assertion raises.
extern const char* const NSInternalInconsistencyException;

/// Reports a failed assertion in a method: writes where it failed to the system's log and throws
/// NSException (NSInternalInconsistencyException) with the description as its reason.
[[noreturn]] void handleFailureInMethod(SEL selector, const Value& object, std::string_view file,
                                        std::int64_t line, const NSString& description);

}  // namespace zeb
