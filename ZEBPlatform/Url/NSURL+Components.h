#pragma once

#include <ZEBPlatform/Foundation/NSNumber.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/NSURL.h>

namespace zeb {

// The parts of a URL. The URL keeps their places from its parsing, so each of these only copies the
// part. Except for the path, parts are as written in the URL: case and percent escapes stay.
//
// A part that the URL does not have is nil, and so is every part of a nil URL. Any thread.

NSString scheme(const NSURL& url);
/// What follows the scheme's ":"; the whole text if there is no scheme.
NSString resourceSpecifier(const NSURL& url);
NSString user(const NSURL& url);
NSString password(const NSURL& url);
/// Nil if the host is empty, as in "file:///tmp". An IP literal is without its brackets.
NSString host(const NSURL& url);
/// 0 to 65535. Nil also for the empty port of "http://host:" and for larger numbers.
NSNumber port(const NSURL& url);
/// The decoded path without its parameter string and without "/" at its end; the path "/" stays. As
/// written if the escapes are not UTF-8. Decoding is not reversible: "%2F" reads as "/".
NSString path(const NSURL& url);
/// What follows the first ";" in the last segment of the path.
NSString parameterString(const NSURL& url);
NSString query(const NSURL& url);
NSString fragment(const NSURL& url);

}  // namespace zeb
