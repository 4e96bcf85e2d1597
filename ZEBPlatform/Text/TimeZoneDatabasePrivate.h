#pragma once

#include <ZEBPlatform/Text/NSTimeZone.h>
#include <unicode/timezone.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace zeb {

struct NSTimeZone::Implementation {
  std::unique_ptr<const icu::TimeZone> zone;
};

namespace detail {

class TimeZoneRules;

/// Where the system's time zones are. Tests use folders of their own.
struct TimeZoneFiles {
  std::string localTime = "/etc/localtime";
  std::string zoneName = "/etc/timezone";
  std::string zones = "/usr/share/zoneinfo";
};

/// Finds zones by name, in the system's files or in ICU's data. Immutable; any thread.
class TimeZoneDatabase {
 public:
  /// Reads which of the two is newer.
  explicit TimeZoneDatabase(std::string folder);

  /// Nil for names that neither of the two has.
  Ref<NSTimeZone> zoneNamed(std::string_view name) const;
  /// A zone with rules of its own.
  static Ref<NSTimeZone> zoneWithRules(const NSString& name, TimeZoneRules rules);

  /// All names; those that others are links to come first.
  std::vector<std::string> names() const;
  /// The content of a zone's file; empty if there is none.
  std::string fileOfZone(std::string_view name) const;

 private:
  Ref<NSTimeZone> systemZoneNamed(std::string_view name) const;

  const std::string folder_;
  bool isNewerThanICU_ = false;
};

/// Reads a file of the time zone database; empty if that fails.
std::string readTimeZoneFile(const std::string& path);

/// The zone "GMT" with an offset, as `timeZoneForSecondsFromGMT`.
Ref<NSTimeZone> fixedTimeZone(std::int64_t seconds);

}  // namespace detail

}  // namespace zeb
