#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/Ref.h>

#include <cstdint>
#include <memory>

namespace zeb {

/// Posted on the default centre, without an object, after the system's time zone has changed. By
/// then `systemTimeZone` answers the new zone, and `defaultTimeZone` too unless one was set.
///
/// A changed /etc/localtime is noticed by a thread of this library, which posts on itself:
/// observers without a queue must be quick, and must not throw, because that would end the process.
/// The thread starts when a zone of the system is first asked for (by `systemTimeZone`,
/// `defaultTimeZone` or a date formatter); a program that only observes calls `systemTimeZone`
/// once. Nothing is noticed if /etc cannot be watched, because it is missing or the system's limits
/// for inotify are reached, and in a process that was forked after its parent had begun to watch. A
/// file that cannot be read leaves the zone as it was. A host that hears of changes in another way
/// reports them with `NSTimeZone::systemTimeZoneDidChange`.
extern const char* const NSSystemTimeZoneDidChangeNotification;

/// A region whose clocks show the same time, with the history and the future of its offset from
/// UTC. Immutable; any thread.
///
/// The rules come from the system's compiled files (/usr/share/zoneinfo) or from ICU's own data,
/// whichever has the newer version of the time zone database; zones that the newer one lacks come
/// from the other. Without files, for instance in small containers, ICU's data are used.
class NSTimeZone : public NSObject {
 public:
  /// For a name of the time zone database such as "Europe/Berlin", or "GMT" followed by a signed
  /// offset in hours and minutes, such as "GMT+0530" or "GMT-3". Nil for nil and unknown names.
  static Ref<NSTimeZone> timeZoneWithName(const NSString& name);
  /// For a common abbreviation such as "UTC", "PST" or "CEST", which stands for one well-known zone
  /// (America/Los_Angeles and Europe/Paris in the examples) and its daylight-saving rules, or for
  /// "GMT" with an offset. Nil for nil and others.
  static Ref<NSTimeZone> timeZoneWithAbbreviation(const NSString& abbreviation);
  /// The zone whose clocks always show this many seconds more than UTC, named for instance
  /// "GMT+0100". Nil beyond 18 hours.
  static Ref<NSTimeZone> timeZoneForSecondsFromGMT(std::int64_t seconds);
  /// The names of the time zone database, sorted; never nil.
  static NSArray knownTimeZoneNames();

  /// The machine's zone, which is remembered until it changes. If the environment variable TZ is
  /// set, it chooses the zone: a name; or rules in the form of POSIX
  /// ("CET-1CEST,M3.5.0,M10.5.0/3"); or the absolute path of a compiled file; each may begin with a
  /// colon. An empty or useless value means GMT. Otherwise /etc/localtime chooses it: the link's
  /// target below a folder "zoneinfo", or for a plain file the zone with the same content, or else
  /// the file's own rules under the name "localtime". Without a usable file, /etc/timezone names
  /// it. If all of that is missing, it is GMT. Never nil.
  static Ref<NSTimeZone> systemTimeZone();
  /// Forgets the machine's zone, so that the next call of `systemTimeZone` finds it out again.
  static void resetSystemTimeZone();
  /// For hosts: finds the machine's zone out again and posts NSSystemTimeZoneDidChangeNotification
  /// on the calling thread.
  static void systemTimeZoneDidChange();

  /// The zone that formatters and calendars use if nothing else was chosen: the one that was set,
  /// else the machine's. Never nil.
  static Ref<NSTimeZone> defaultTimeZone();
  /// Nil lets the machine's zone be the default again. Posts nothing.
  static void setDefaultTimeZone(const Ref<NSTimeZone>& timeZone);

  /// As it was asked for, such as "Europe/Berlin".
  const NSString& name() const noexcept { return name_; }
  /// What the time zone database calls the time at this date, such as "CEST", or "-03" where people
  /// use no abbreviation. A nil date means now, here and below.
  NSString abbreviation(const NSDate& date = nullptr) const;
  /// Positive to the east, with daylight-saving time.
  std::int64_t secondsFromGMT(const NSDate& date = nullptr) const;
  bool isDaylightSavingTime(const NSDate& date = nullptr) const;

  /// Zones are equal if they have the same name and the same rules.
  bool isEqual(const NSObject& other) const override;
  std::size_t hash() const noexcept override;
  std::string description() const override;

  /// For this library's other classes only.
  struct Implementation;
  NSTimeZone(const NSString& name, std::unique_ptr<const Implementation> implementation);
  const Implementation& implementation() const noexcept { return *implementation_; }

 protected:
  ~NSTimeZone() override;

 private:
  const NSString name_;
  const std::unique_ptr<const Implementation> implementation_;
};

}  // namespace zeb
