#pragma once

#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/NSString.h>

#include <cstdint>

namespace zeb {

/// What `zeb_errorDomainAndCodeString` includes; bits to combine.
enum ZEBErrorDomainAndCodeFlags : std::uint64_t {
  ZEBErrorDomainAndCodeFlagUnderlyingErrors = 1,
};

/// An error whose only detail is the description. A nil description becomes empty.
NSError zeb_errorWithDomain(const NSString& domain, std::int64_t code, const NSString& description);

// All of these return nil or false for a nil error. They may be called from any thread.

/// A text for people: the description in the error's details, without a ". (null)." at its end.
/// Without a description, the code and the failure reason or, without a reason, the domain, with
/// its first character in upper case: "7 Abc". Programs that do not link the component Text have
/// only a-z raised.
NSString zeb_errorString(const NSError& error);

/// Whether a URL could not be loaded because there was no connection, or the network services
/// reported that.
bool zeb_isNotConnectedToInternetError(const NSError& error);

/// Whether loading a URL timed out, or the POSIX domain's code is 60. That is deliberately the
/// number on other systems: Linux's own ETIMEDOUT does not count.
bool zeb_isTimedOutError(const NSError& error);

/// "domain:code". With ZEBErrorDomainAndCodeFlagUnderlyingErrors, the same of the underlying errors
/// follows, outermost first, joined with ",".
NSString zeb_errorDomainAndCodeString(const NSError& error, std::uint64_t flags);

}  // namespace zeb
