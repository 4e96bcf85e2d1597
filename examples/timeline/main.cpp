// Signs in with a token from the keychain, receives a feed, makes objects of it, archives them,
// reads the archive, and shows the posts.

#include <ZEBPlatform/Foundation/Format.h>
#include <ZEBPlatform/Logging/OLGLogging.h>
#include <ZEBPlatform/Text/NSLocale.h>
#include <ZEBPlatform/Text/NSTimeZone.h>
#include <ZEBUtilities/Coding/ZEBArchiver.h>
#include <ZEBUtilities/Coding/ZEBUnarchiver.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <new>
#include <optional>
#include <sstream>
#include <stdexcept>

#include "Account.h"
#include "Arrival.h"
#include "BundledFeed.h"
#include "Files.h"
#include "Report.h"
#include "Steps.h"
#include "Text.h"

namespace zeb::timeline {

namespace {

constexpr const char* usage =
    "usage: timeline [options…] [file…]\n"
    "Shows a feed, or what any other JSON file consists of; without a file, a feed of its own.\n"
    "  --keep            leave the archive in the temporary directory and print its path\n"
    "  --keychain PATH   keep the account's token in this folder for the next run\n"
    "  --locale NAME     show dates in these words, for example ar_EG or de_DE\n"
    "  --contacts DIR    show which authors are in this folder of .vcf files, for example\n"
    "                    examples/timeline/contacts\n"
    "  --time-zone NAME  show dates in this zone, for example Asia/Tokyo or GMT+0530\n";

/// Writes the objects to a file and reads them back.
void archive(const Timeline& timeline, bool keepsArchive, Steps& steps) {
  steps.start();
  const NSData archived = ZEBArchiver().archivedData(timeline);
  steps.finish("archive", archived.length());

  steps.start();
  TemporaryFile file(archived);
  steps.finish("write", archived.length());
  if (keepsArchive) {
    file.keep();
    steps.remark(file.path());
  }

  const auto authors = makeRef<AuthorPool>();
  const ZEBUnarchiver unarchiver(sharingRegistry(authors));
  steps.start();
  const auto restored = unarchiver.unarchivedRootObject<Timeline>(contentsOfFile(file.path()));
  steps.finish("read back", archived.length());
  if (restored != timeline) throw std::runtime_error("The archive gave back something else.");
  steps.remark(NSString::stringWithFormat("equal, with as many authors: %tu", authors->count()));
}

/// Writes to standard output. A reader that closes the pipe early, such as `head`, is not a
/// failure.
bool show(const std::string& text) {
  const bool isTaken = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
  if ((std::fflush(stdout) == 0 && isTaken) || errno == EPIPE) return true;
  std::perror("timeline: standard output");
  return false;
}

struct Options {
  bool keepsArchive = false;
  std::optional<std::string> keychainFolder;
  std::string contactsFolder;
};

/// Shows the file's document, or the bundled feed when `path` is null.
bool showDocument(const std::string* path, const Options& options, Account& account,
                  const Screen& screen) {
  std::ostringstream out;
  Steps steps;
  account.signIn(steps);
  NSArray contacts;
  if (!options.contactsFolder.empty()) {
    steps.start();
    contacts = contactsInFolder(options.contactsFolder);
    steps.finish("contacts", 0);
    steps.remark(NSString::stringWithFormat("contacts: %tu", contacts.count()));
  }
  steps.start();
  const NSData data = path ? contentsOfFile(*path) : NSData::dataWithBytes(bundledFeed);
  steps.finish("read", data.length());

  bool isShown = false;
  receive(data, screen, steps, [&](const Value& document) {
    if (FeedReader::canRead(document)) {
      FeedReader reader;
      steps.start();
      const Timeline timeline = reader.timeline(document);
      steps.finish("build", data.length());
      steps.remark(NSString::stringWithFormat("posts: %tu, authors: %tu", timeline.posts.size(),
                                              reader.authorCount()));
      archive(timeline, options.keepsArchive, steps);
      printTimeline(out, screen, timeline, reader.gaps());
      printFriends(out, screen, friendsIn(timeline, contacts));
    } else {
      printOverview(out, screen, document);
    }
    out << '\n';
    steps.print(out, screen);
    isShown = show(out.str());
  });
  return isShown;
}

bool showReport(const std::string* path, const Options& options, Account& account,
                const Screen& screen) {
  NSString reason;
  try {
    return showDocument(path, options, account, screen);
  } catch (const std::bad_alloc&) {
    reason = "Not enough memory";
  } catch (const std::exception& error) {
    reason = error.what();
  }
  std::cerr << "timeline: " << printable(path ? *path : "the bundled feed") << ": "
            << printable(reason) << '\n';
  return false;
}

/// Chooses what the environment would choose otherwise. Returns why it cannot be used, or nil.
NSString useLocale(const NSString& identifier) {
  const auto locale = NSLocale::localeWithLocaleIdentifier(identifier);
  if (locale->languageCode().empty()) return "is no locale, such as de_DE";
  NSLocale::setCurrentLocale(locale);
  return nullptr;
}

NSString useTimeZone(const NSString& name) {
  const auto timeZone = NSTimeZone::timeZoneWithName(name);
  if (!timeZone) return "is no known time zone, such as Europe/Berlin";
  NSTimeZone::setDefaultTimeZone(timeZone);
  return nullptr;
}

int run(int argumentCount, char** arguments) {
  std::signal(SIGPIPE, SIG_IGN);  // a closed pipe ends one write, not the process
  OLGSetLevel(OLGLevelError);     // hides warnings about the busy main thread
  Options options;
  std::vector<std::string> paths;
  for (int index = 1; index < argumentCount; ++index) {
    const std::string argument = arguments[index];
    if (argument == "--keep") {
      options.keepsArchive = true;
    } else if (argument == "--keychain" && index + 1 < argumentCount) {
      options.keychainFolder = arguments[++index];
    } else if (argument == "--contacts" && index + 1 < argumentCount) {
      options.contactsFolder = arguments[++index];
    } else if (argument == "--locale" || argument == "--time-zone") {
      const std::string name = ++index < argumentCount ? arguments[index] : "";
      const NSString problem = argument == "--locale" ? useLocale(name) : useTimeZone(name);
      if (!problem.isNil()) {
        std::cerr << "timeline: " << argument << ": '" << printable(name) << "' " << problem
                  << '\n';
        return 2;
      }
    } else if (argument == "--help") {
      return show(usage) ? 0 : 1;
    } else if (argument.starts_with('-')) {
      std::cerr << "timeline: unknown option " << printable(argument) << '\n' << usage;
      return 2;
    } else {
      paths.push_back(argument);
    }
  }

  std::optional<Account> account;
  try {
    account.emplace(options.keychainFolder ? &*options.keychainFolder : nullptr);
  } catch (const std::exception& error) {
    std::cerr << "timeline: the keychain: " << printable(error.what()) << '\n';
    return 1;
  }
  const Screen screen = Screen::ofStandardOutput();
  if (paths.empty()) return showReport(nullptr, options, *account, screen) ? 0 : 1;
  int status = 0;
  for (const std::string& path : paths) {
    if (paths.size() > 1) show("\n== " + printable(path).utf8() + "\n");
    if (!showReport(&path, options, *account, screen)) status = 1;
  }
  return status;
}

}  // namespace

}  // namespace zeb::timeline

int main(int argumentCount, char** arguments) {
  return zeb::timeline::run(argumentCount, arguments);
}
