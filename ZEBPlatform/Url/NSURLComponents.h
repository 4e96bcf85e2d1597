#pragma once

#include <ZEBPlatform/Foundation/ASCIICharacterSet.h>
#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSNumber.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/NSURL.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/Ref.h>

#include <string>

namespace zeb {

/// The parts of a URL (RFC 3986), which can be read and replaced one by one. `string` of unchanged
/// components is exactly the text that they were made from.
///
/// Each part is kept percent-encoded. The plain functions decode and encode it; the functions named
/// `percentEncoded…` give and take it as it is in the text. A part that is nil is not in the text;
/// an empty one is, with its delimiter. The path is never nil, but may be empty.
///
/// Setting a part to something that it cannot contain, as the setters say, throws NSException
/// (NSInvalidArgumentException) and changes nothing.
///
/// Components belong to one thread at a time.
class NSURLComponents final : public NSObject {
 public:
  /// Components of an empty text.
  NSURLComponents() = default;
  /// Nil if the text is not a URL (see `NSURL::URLWithString`).
  static Ref<NSURLComponents> componentsWithString(const NSString& string);
  /// Nil for a nil URL. URLs here have no base URL, so the second argument makes no difference.
  static Ref<NSURLComponents> componentsWithURL(const NSURL& url, bool resolvingAgainstBaseURL);

  /// Letters, digits, "+", "-" and ".", the first of them a letter.
  const NSString& scheme() const noexcept { return parts_.scheme; }
  void setScheme(const NSString& scheme);

  /// 0 to 65535. Nil also for the empty port of "http://host:" and for larger numbers.
  NSNumber port() const;
  void setPort(const NSNumber& port);

  /// Decoded; as written if the escapes are not UTF-8. Any text can be set: what the part may not
  /// contain is encoded, and U+FFFD stands for unpaired surrogates. A user without an authority
  /// makes one. A host that is an IP literal in brackets is kept as it is. A host with characters
  /// of other scripts is percent-encoded, which most servers do not understand: see
  /// `URLWithUnicodeString`.
  NSString user() const;
  NSString password() const;
  NSString host() const;
  NSString path() const;
  NSString query() const;
  NSString fragment() const;
  void setUser(const NSString& user);
  void setPassword(const NSString& password);
  void setHost(const NSString& host);
  void setPath(const NSString& path);
  void setQuery(const NSString& query);
  void setFragment(const NSString& fragment);

  /// As in the text. Only the part's own characters (see `ASCIICharacterSet`) and escapes can be
  /// set.
  const NSString& percentEncodedUser() const noexcept { return parts_.user; }
  const NSString& percentEncodedPassword() const noexcept { return parts_.password; }
  const NSString& percentEncodedHost() const noexcept { return parts_.host; }
  const NSString& percentEncodedPath() const noexcept { return parts_.path; }
  const NSString& percentEncodedQuery() const noexcept { return parts_.query; }
  const NSString& percentEncodedFragment() const noexcept { return parts_.fragment; }
  void setPercentEncodedUser(const NSString& user);
  void setPercentEncodedPassword(const NSString& password);
  void setPercentEncodedHost(const NSString& host);
  void setPercentEncodedPath(const NSString& path);
  void setPercentEncodedQuery(const NSString& query);
  void setPercentEncodedFragment(const NSString& fragment);

  /// The query as an array of `NSURLQueryItem`, divided at "&" and at the first "=" of each item.
  /// Nil without a query, empty for an empty one. The plain functions decode and encode names and
  /// values; "&", "=", "+" and ";" in them are encoded, because servers disagree about their
  /// meaning. Nil names are written as empty ones; elements that are not query items are ignored.
  NSArray queryItems() const;
  void setQueryItems(const NSArray& items);
  /// Names and values as in the text, where a name cannot contain "=" and neither can contain "&".
  NSArray percentEncodedQueryItems() const;
  void setPercentEncodedQueryItems(const NSArray& items);

  /// The text. Nil if it would read as other parts: a path with an authority before it must be
  /// empty or begin with "/"; a path without one must not begin with "//", and without scheme and
  /// authority its first segment must not contain ":".
  NSString string() const;
  /// The text as a URL; nil also if it is empty.
  NSURL URL() const { return NSURL::URLWithString(string()); }

  Ref<NSURLComponents> copy() const;
  /// Equal when the parts are, as written.
  bool isEqual(const NSObject& other) const override;
  std::size_t hash() const noexcept override;
  /// The text of `string`, or "(null)".
  std::string description() const override { return string().description().utf8(); }

 private:
  /// As in the text.
  struct Parts {
    NSString scheme, user, password, host, port, path{""}, query, fragment;

    bool hasAuthority() const noexcept { return user || password || host || port; }
    bool operator==(const Parts&) const = default;
  };
  Parts parts_;
};

}  // namespace zeb
