#include <ZEBPlatform/AddressBook/CNContact.h>
#include <ZEBPlatform/AddressBook/CNError.h>
#include <ZEBPlatform/AddressBook/ContactFolderPrivate.h>
#include <ZEBPlatform/AddressBook/LoggingPrivate.h>
#include <ZEBPlatform/AddressBook/StoreWatchPrivate.h>
#include <ZEBPlatform/AddressBook/VCardLinesPrivate.h>
#include <ZEBPlatform/AddressBook/VCardReaderPrivate.h>
#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Foundation/Format.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSNumber.h>
#include <ZEBPlatform/Foundation/NSOrderedSet.h>
#include <ZEBPlatform/Linux/detail/FileReading.h>
#include <ZEBPlatform/Linux/detail/Folder.h>

#include <algorithm>
#include <cerrno>
#include <deque>
#include <map>
#include <utility>
#include <vector>

namespace zeb::detail {

namespace {

constexpr std::size_t maxFileSize = 64 << 20;
/// Broken files beyond this number are not logged, so that the memory for them stays small.
constexpr std::size_t maxLoggedFiles = 10'000;

/// Remembers which states of files were logged.
class LoggedFiles {
 public:
  static LoggedFiles& shared() {
    static NeverDestroyed<LoggedFiles> instance;
    return *instance;
  }

  /// Whether this state of the file has not been logged. It counts as logged from now on.
  bool add(const std::string& path, const FileState& state) ZEB_EXCLUDES(lock_) {
    const LockGuard guard(lock_);
    const auto found = states_.find(path);
    if (found != states_.end()) return std::exchange(found->second, state) != state;
    return states_.size() < maxLoggedFiles && states_.emplace(path, state).second;
  }

 private:
  Lock lock_;
  std::map<std::string, FileState> states_ ZEB_GUARDED_BY(lock_);
};

void logFile(const std::string& path, const FileState& state, const std::string& problem) {
  if (!OLGCanLog(nullptr, OLGLevelWarning, CNLoggingChannel)) return;
  if (!LoggedFiles::shared().add(path, state)) return;
  logAddressBook(OLGLevelWarning, "ZEBPlatform/AddressBook/ContactFolder", "contactsOfFolder",
                 __LINE__, formattedText("%s: %s", {path, problem}));
}

/// What was read from one file.
struct FileResult {
  std::size_t usedCards = 0;
  std::size_t brokenCards = 0;
  BrokenVCard firstBroken{};

  bool isComplete() const noexcept { return usedCards > 0 && brokenCards == 0; }
  std::string problem(std::string_view text) const {
    if (brokenCards == 0) return "the file is left out (it contains no vCard)";
    const auto line = 1 + std::ranges::count(text.substr(0, firstBroken.place), '\n');
    return formattedText("%zu of its vCards are left out; the first one, in line %zd, because %s",
                         {brokenCards, line, firstBroken.reason});
  }
};

/// Contacts by identifier, in the order of the first cards that they are made of.
class UnifiedContacts {
 public:
  void add(VCard& card) {
    const Value known = indexes_.objectForKey(card.uid);
    if (known.isNil()) {
      indexes_.setObject(static_cast<std::uint64_t>(contacts_.size()), card.uid);
      NSString identifier = card.uid;
      contacts_.push_back({std::move(identifier), std::move(card), false, false});
      return;
    }
    Unified& unified = contacts_[NSNumber(known).unsignedLongLongValue()];
    unified.hasSeveralCards = true;
    VCard& first = unified.card;
    append(first.emailAddresses, card.emailAddresses);
    append(first.phoneNumbers, card.phoneNumbers);
    if (first.hasName()) return;
    card.emailAddresses = std::move(first.emailAddresses);
    card.phoneNumbers = std::move(first.phoneNumbers);
    first = std::move(card);
  }

  /// A card without UID, which is a contact of its own.
  void addAnonymous(NSString identifier, VCard& card) {
    contacts_.push_back({std::move(identifier), std::move(card), false, true});
  }

  NSArray array(std::uint32_t keys) && {
    NSMutableArray result = NSMutableArray::arrayWithCapacity(contacts_.size());
    for (Unified& contact : contacts_) {
      while (contact.isAnonymous && indexes_.contains(contact.identifier)) {
        contact.identifier = contact.identifier + "#";
      }
      VCard card = std::move(contact.card);  // released before the next one is made
      result.addObject(makeRef<CNContact>(
          CNContactFields{.identifier = std::move(contact.identifier),
                          .namePrefix = std::move(card.namePrefix),
                          .givenName = std::move(card.givenName),
                          .middleName = std::move(card.middleName),
                          .familyName = std::move(card.familyName),
                          .nameSuffix = std::move(card.nameSuffix),
                          .nickname = std::move(card.nickname),
                          .organizationName = std::move(card.organizationName),
                          .formattedName = std::move(card.formattedName),
                          .emailAddresses = list(card.emailAddresses, contact.hasSeveralCards),
                          .phoneNumbers = list(card.phoneNumbers, contact.hasSeveralCards)},
          keys));
    }
    return result.copy();
  }

 private:
  struct Unified {
    NSString identifier;
    VCard card;
    bool hasSeveralCards;
    bool isAnonymous;
  };

  static void append(std::vector<Value>& list, const std::vector<Value>& more) {
    list.insert(list.end(), more.begin(), more.end());
  }
  static NSArray list(const std::vector<Value>& values, bool eachOnce) {
    if (values.empty()) return nullptr;
    if (!eachOnce) return NSArray::arrayWithObjects(values);
    return NSOrderedSet::orderedSetWithObjects(values).array();
  }

  NSMutableDictionary indexes_;
  std::deque<Unified> contacts_;
};

FileResult readCards(const std::string& name, std::string_view text, UnifiedContacts& contacts) {
  FileResult result;
  std::size_t anonymousCards = 0;
  readVCards(
      text,
      [&](VCard& card) {
        ++result.usedCards;
        if (card.isGroup) return;
        if (card.uid) return contacts.add(card);
        const bool isFirst = ++anonymousCards == 1;
        contacts.addAnonymous(
            isFirst ? NSString(name) : NSString::stringWithFormat("%s#%zu", name, anonymousCards),
            card);
      },
      [&](const BrokenVCard& card) {
        if (result.brokenCards++ == 0) result.firstBroken = card;
      });
  return result;
}

NSError folderError(const std::string& path, int failure) {
  return NSError(
      CNErrorDomain, CNErrorCodeDataAccessError,
      NSDictionary{{NSLocalizedDescriptionKey,
                    NSString::stringWithFormat("The folder of contacts %s could not be read (%s).",
                                               path, textOfErrorNumber(failure))},
                   {NSFilePathErrorKey, NSString(path)},
                   {NSUnderlyingErrorKey, NSError(NSPOSIXErrorDomain, failure)}});
}

}  // namespace

bool isContactFileName(std::string_view name) noexcept {
  constexpr std::string_view ending = ".vcf";
  return name.size() > ending.size() && name.front() != '.' &&
         equalIgnoringCase(name.substr(name.size() - ending.size()), ending);
}

NSArray contactsOfFolder(const std::string& path, std::uint32_t keys, NSError* error) {
  Folder folder;
  std::vector<std::string> names;
  int failure = folder.open(path);
  if (!failure) failure = folder.appendNames(names);
  if (failure == ENOENT) return NSArray::array();
  if (failure) {
    if (error) *error = folderError(path, failure);
    return nullptr;
  }
  std::erase_if(names, [](const std::string& name) { return !isContactFileName(name); });
  std::ranges::sort(names);

  UnifiedContacts contacts;
  std::string content;
  for (const std::string& name : names) {
    FileState state;
    failure = folder.readFile(name, maxFileSize, content, state);
    if (failure == ENOENT) continue;  // removed meanwhile
    const std::string file = path + '/' + name;
    if (failure) {
      const bool isLink = failure == ELOOP;
      logFile(file, state,
              formattedText("the file is left out (%s)",
                            {isLink ? "links are not followed" : textOfErrorNumber(failure)}));
      continue;
    }
    // The program that makes the file has not written it yet.
    if (content.empty()) continue;
    const FileResult result = readCards(name, content, contacts);
    if (!result.isComplete()) logFile(file, state, result.problem(content));
  }
  return std::move(contacts).array(keys);
}

}  // namespace zeb::detail
