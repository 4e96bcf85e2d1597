#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/NSURL.h>

namespace zeb {

// URLs from what people type and servers send, their forms for people, and changes of queries.
// A nil URL gives nil or false unless something else is said. Nothing is logged. Any thread.
//
// Some results are deliberately what other implementations of these functions give, although they
// look wrong; the comments say which.

/// The strict parse (`NSURL::URLWithString`) or, if it fails, `URLWithUnicodeString`, which accepts
/// hosts and paths of other scripts. Nil for a nil or empty text.
[[nodiscard]] NSURL zeb_URLWithString(const NSString& string);

/// The same for what a person typed: "http://" is put before a text that does not begin with the
/// letters "http" in any case. Deliberately only the four letters count, so "httpd.example" gets no
/// scheme.
[[nodiscard]] NSURL zeb_URLWithDisplayString(const NSString& string);

/// `unicodeAbsoluteString`: the text with the host in Unicode.
[[nodiscard]] NSString zeb_absoluteString(const NSURL& url);

/// `zeb_absoluteString` without the scheme, its colon and all "/" that follow; of a rest of nothing
/// but "/" the last one stays. Nil if nothing follows the scheme. Deliberately a URL without a
/// scheme loses its first unit.
[[nodiscard]] NSString zeb_schemelessString(const NSURL& url);

/// For a URL whose scheme is exactly "http" or "https": the host in Unicode, the decoded path, and
/// query and fragment unless they are empty. Scheme, user, password, port and parameter string are
/// left out. `unicodeAbsoluteString` for any other scheme, "HTTP" included. Deliberately "(null)"
/// stands for a missing host.
[[nodiscard]] NSString zeb_displayString(const NSURL& url);

/// Scheme, "://", the host in ASCII, and the decoded path. Deliberately "(null)" stands for a
/// missing scheme or host, and an IPv6 address has no brackets.
[[nodiscard]] NSString zeb_resourceString(const NSURL& url);

/// The text of the URL without parameter string, query and fragment, and these with the delimiter
/// that they begin with, or nil if all of them are missing or empty. The two together are the text.
///
/// Deliberately only lengths are added up, and an empty part counts as missing with its delimiter:
/// "/a;b?#c" is divided into "/a;" and "b?#c".
[[nodiscard]] NSString zeb_unparameterizedURLString(const NSURL& url);
[[nodiscard]] NSString zeb_parameterString(const NSURL& url);

/// Whether the last labels of the host are those of `string`, without regard to the case of ASCII
/// letters. So a host is its own sub-domain, and "badexample.com" is none of "example.com".
/// Deliberately a nil string gives true, also without a host; any other string then gives false.
bool zeb_hostIsSubDomainOfString(const NSURL& url, const NSString& string);

/// The URL with the array's query items (`NSURLQueryItem`), percent-encoded, before those that it
/// has, which stay as they are written. Other elements are ignored. The URL itself for a nil or
/// empty array.
[[nodiscard]] NSURL zeb_URLByAppendingQueryItems(const NSURL& url, const NSArray& items);

/// The URL with each name once in its query, in no specified order: with the value of the last of
/// the array's items of that name, else of the last in the query. Elements of the array that are no
/// query items, or that have no name or no value, are ignored. The URL itself for a nil or empty
/// array.
///
/// Throws NSException (NSInvalidArgumentException) if the URL has an item without "=", which this
/// function deliberately does not support.
[[nodiscard]] NSURL zeb_URLByAddingOrUpdatingQueryItems(const NSURL& url, const NSArray& items);

/// Whether the scheme is "http" or "https" in any case.
bool zeb_hasHTTPScheme(const NSURL& url);

}  // namespace zeb
