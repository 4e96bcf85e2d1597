#pragma once

#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/NSString.h>

#include <cstdint>

namespace zeb {

/// What `zeb_errorDomainAndCodeString` tells; bits to combine.
enum ZEBErrorDomainAndCodeFlags : std::uint64_t {
  ZEBErrorDomainAndCodeFlagUnderlyingErrors = 1,
};

/// An error whose only detail is the description; a nil one becomes empty.
NSError zeb_errorWithDomain(const NSString& domain, std::int64_t code, const NSString& description);

// All of these answer nil or false for a nil error. Any thread.

/// For people: the description that the error's details hold, without a ". (null)." at its end. Without one,
/// the code and the failure reason, or the code and the domain, with a capital (of a-z) first: "7 Abc".
NSString zeb_errorString(const NSError& error);

/// Whether a URL was not loaded, or the network services answered, for want of a connection.
bool zeb_isNotConnectedToInternetError(const NSError& error);

/// Whether a URL was not loaded in time, or the POSIX domain's code is 60. The latter is the number of other
/// systems, deliberately: Linux's own ETIMEDOUT does not count.
bool zeb_isTimedOutError(const NSError& error);

/// "domain:code"; with ZEBErrorDomainAndCodeFlagUnderlyingErrors followed by those of the errors beneath it,
/// outermost first, joined with ",".
NSString zeb_errorDomainAndCodeString(const NSError& error, std::uint64_t flags);

}  // namespace zeb
