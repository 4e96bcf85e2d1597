#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Linux/detail/DirectoryWatch.h>
#include <ZEBPlatform/Linux/detail/Thread.h>
#include <ZEBPlatform/Notifications/NSNotificationCenter.h>
#include <ZEBPlatform/Text/SystemTimeZonePrivate.h>
#include <ZEBPlatform/Text/TimeZoneRulesPrivate.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <utility>

namespace zeb::detail {

namespace {

namespace fs = std::filesystem;

constexpr int maxLinks = 8;

struct State {
  Lock lock;
  TimeZoneFiles files ZEB_GUARDED_BY(lock);
  std::shared_ptr<const TimeZoneDatabase> database ZEB_GUARDED_BY(lock);
  Ref<NSTimeZone> system ZEB_GUARDED_BY(lock);
  Ref<NSTimeZone> chosen ZEB_GUARDED_BY(lock);
  /// Counts the moments when knowledge became outdated, so that a thread that read files before
  /// does not store what it found.
  std::uint64_t generation ZEB_GUARDED_BY(lock) = 0;
  bool isWatched ZEB_GUARDED_BY(lock) = false;
};

State& state() {
  static NeverDestroyed<State> instance;
  return *instance;
}

/// The zone that a path such as "../usr/share/zoneinfo/Europe/Berlin" is about; nil for others.
Ref<NSTimeZone> zoneOfPath(const std::string& path, const TimeZoneDatabase& database) {
  constexpr std::string_view folder = "zoneinfo/";
  const std::size_t place = path.rfind(folder);
  if (place == std::string::npos) return nullptr;
  std::string_view name = std::string_view(path).substr(place + folder.size());
  // Copies of all zones, with the same rules.
  for (const std::string_view copies : {"posix/", "right/"})
    if (name.starts_with(copies)) name.remove_prefix(copies.size());
  return database.zoneNamed(name);
}

/// The first line, without white space around it.
std::string firstLine(const std::string& text) {
  constexpr const char* space = " \t\r\n";
  const std::size_t begin = text.find_first_not_of(space);
  if (begin == std::string::npos) return {};
  return text.substr(begin, text.find_first_of(space, begin) - begin);
}

Ref<NSTimeZone> zoneOfContent(const std::string& content, const std::string& likelyName,
                              const TimeZoneDatabase& database) {
  std::optional<TimeZoneRules> rules = timeZoneRulesFromFile(content);
  if (!rules) return nullptr;
  if (database.fileOfZone(likelyName) == content) return database.zoneNamed(likelyName);
  for (const std::string& name : database.names())
    if (database.fileOfZone(name) == content) return database.zoneNamed(name);
  return TimeZoneDatabase::zoneWithRules("localtime", *std::move(rules));
}

/// Nil if the file is missing or its content malformed.
Ref<NSTimeZone> zoneOfFile(fs::path path, const TimeZoneFiles& files,
                           const TimeZoneDatabase& database) {
  std::error_code failure;
  for (int links = 0; links < maxLinks; ++links) {
    if (Ref<NSTimeZone> zone = zoneOfPath(path.string(), database)) return zone;
    const fs::path target = fs::read_symlink(path, failure);
    if (failure) break;
    path = path.parent_path() / target;
  }
  return zoneOfContent(readTimeZoneFile(path.string()), firstLine(readTimeZoneFile(files.zoneName)),
                       database);
}

Ref<NSTimeZone> zoneOfVariable(std::string_view value, const TimeZoneFiles& files,
                               const TimeZoneDatabase& database) {
  if (value.starts_with(':')) value.remove_prefix(1);
  Ref<NSTimeZone> zone;
  if (value.starts_with('/')) {
    zone = zoneOfFile(std::string(value), files, database);
  } else if (!value.empty()) {
    // Here "GMT+5" has the meaning of POSIX, five hours behind, as in other programs, and not the
    // meaning of a zone's name.
    if (!value.starts_with("GMT")) zone = database.zoneNamed(value);
    if (!zone) {
      if (std::optional<YearlyRules> rules = yearlyRulesFromText(value)) {
        LocalTimeType type = rules->standard;
        zone = TimeZoneDatabase::zoneWithRules(
            NSString(value), TimeZoneRules({std::move(type)}, {}, std::move(rules)));
      } else {
        zone = database.zoneNamed(value);
      }
    }
  }
  return zone ? zone : fixedTimeZone(0);
}

Ref<NSTimeZone> readSystemTimeZone(const TimeZoneFiles& files, const TimeZoneDatabase& database) {
  if (const char* value = std::getenv("TZ")) return zoneOfVariable(value, files, database);
  if (Ref<NSTimeZone> zone = zoneOfFile(files.localTime, files, database)) return zone;
  Ref<NSTimeZone> zone = database.zoneNamed(firstLine(readTimeZoneFile(files.zoneName)));
  return zone ? zone : fixedTimeZone(0);
}

/// What a thread knew before it began to read files.
struct Beginning {
  TimeZoneFiles files;
  std::uint64_t generation;
};

Beginning beginReading() {
  State& known = state();
  const LockGuard guard(known.lock);
  return {known.files, known.generation};
}

/// Makes this the system's zone, unless knowledge has become outdated since the beginning, and
/// forgets the database, which may have been updated, too. On success `zone` becomes the previous
/// one.
bool replaceSystemTimeZone(Ref<NSTimeZone>& zone, const Beginning& beginning) {
  std::shared_ptr<const TimeZoneDatabase> database;  // released after the lock
  State& known = state();
  const LockGuard guard(known.lock);
  if (known.generation != beginning.generation) return false;
  ++known.generation;
  std::swap(known.database, database);
  std::swap(known.system, zone);
  return true;
}

/// Called on the watching thread.
void localTimeFileDidChange() {
  if (std::getenv("TZ")) return;
  Ref<NSTimeZone> zone, previous;
  Beginning beginning;
  do {
    beginning = beginReading();
    const TimeZoneFiles& files = beginning.files;
    zone = zoneOfFile(files.localTime, files, TimeZoneDatabase(files.zones));
    // While the file is being written, the zone stays what it was; the end of the writing is
    // another change.
    if (!zone) return;
    previous = zone;
  } while (!replaceSystemTimeZone(previous, beginning));
  if (!previous || !previous->isEqual(*zone))
    NSNotificationCenter::defaultCenter()->postNotificationName(
        NSSystemTimeZoneDidChangeNotification);
}

struct Watched {
  DirectoryWatch watch;
  std::string name;
};

void watchFile(void* argument) noexcept {
  const std::unique_ptr<Watched> watched(static_cast<Watched*>(argument));
  while (watched->watch.waitForEntry(watched->name)) localTimeFileDidChange();
}

/// Begins before the file is read for the first time, so that no change is missed.
void watchOnce() {
  State& known = state();
  std::string path;
  {
    const LockGuard guard(known.lock);
    if (std::exchange(known.isWatched, true)) return;
    path = known.files.localTime;
  }
  const fs::path file(path);
  std::unique_ptr<Watched> watched(
      new Watched{DirectoryWatch(file.parent_path().string()), file.filename().string()});
  if (watched->watch.isWatching() && startServiceThread("zeb-time-zone", watchFile, watched.get()))
    static_cast<void>(watched.release());
}

}  // namespace

std::shared_ptr<const TimeZoneDatabase> timeZoneDatabase() {
  State& known = state();
  {
    const LockGuard guard(known.lock);
    if (known.database) return known.database;
  }
  const Beginning beginning = beginReading();
  auto database = std::make_shared<const TimeZoneDatabase>(beginning.files.zones);
  const LockGuard guard(known.lock);
  if (known.generation == beginning.generation) known.database = database;
  return database;
}

Ref<NSTimeZone> systemTimeZone() {
  State& known = state();
  {
    const LockGuard guard(known.lock);
    if (known.system) return known.system;
  }
  watchOnce();
  const Beginning beginning = beginReading();
  const Ref<NSTimeZone> zone = readSystemTimeZone(beginning.files, *timeZoneDatabase());
  const LockGuard guard(known.lock);
  if (known.generation == beginning.generation) known.system = zone;
  return zone;
}

void forgetSystemTimeZone() {
  Ref<NSTimeZone> nothing;
  while (!replaceSystemTimeZone(nothing, beginReading())) {
  }
}

void refreshSystemTimeZone() {
  Ref<NSTimeZone> zone;
  Beginning beginning;
  do {
    beginning = beginReading();
    zone = readSystemTimeZone(beginning.files, TimeZoneDatabase(beginning.files.zones));
  } while (!replaceSystemTimeZone(zone, beginning));
}

Ref<NSTimeZone> defaultTimeZone() {
  {
    State& known = state();
    const LockGuard guard(known.lock);
    if (known.chosen) return known.chosen;
  }
  return systemTimeZone();
}

void setDefaultTimeZone(Ref<NSTimeZone> timeZone) {
  State& known = state();
  const LockGuard guard(known.lock);
  std::swap(known.chosen, timeZone);  // the replaced one is released after the lock
}

void setTimeZoneFiles(TimeZoneFiles files) {
  {
    State& known = state();
    const LockGuard guard(known.lock);
    known.files = std::move(files);
    known.isWatched = false;
  }
  forgetSystemTimeZone();
}

}  // namespace zeb::detail
