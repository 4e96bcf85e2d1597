#pragma once

#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSRange.h>

namespace zeb::timeline {

/// Counts of the fields that a feed had, but not in a usable form.
struct Gaps {
  std::size_t nulls = 0;
  std::size_t unusable = 0;       ///< of the wrong kind, or nonsensical
  std::size_t dropped = 0;        ///< elements of arrays
  std::size_t numbersAsText = 0;  ///< usable; for information only

  std::size_t total() const noexcept { return nulls + unusable + dropped; }
};

/// Reads a loosely typed dictionary with the library's typed readers, and counts the values that
/// had to be replaced by a default; a missing field does not count. Strings are detached from their
/// document, because they would keep its memory otherwise.
class Fields {
 public:
  Fields(const Value& dictionary, Gaps& gaps) : dictionary_(dictionary), gaps_(gaps) {}

  const NSDictionary& dictionary() const noexcept { return dictionary_; }
  NSString string(const StringKey& key, const NSString& defaultValue = "") const;
  std::int64_t integer(const StringKey& key) const;
  /// Unescaped, for texts that services escape for web pages.
  NSString text(const StringKey& key, const NSString& defaultValue = "") const;
  /// Milliseconds since 1970, or the textual timestamp of the service.
  NSDate date(const StringKey& key) const;
  /// Two numbers: where the range begins, and its length.
  NSRange range(const StringKey& key) const;
  Fields fields(const StringKey& key) const;
  NSArray dictionaries(const StringKey& key) const;
  NSArray strings(const StringKey& key) const;

 private:
  bool hasNumber(const StringKey& key) const;
  /// Returns the result of a reader, after counting it.
  template <class Handle>
  const Handle& noted(const StringKey& key, const Handle& result) const;

  NSDictionary dictionary_;
  Gaps& gaps_;
};

}  // namespace zeb::timeline
