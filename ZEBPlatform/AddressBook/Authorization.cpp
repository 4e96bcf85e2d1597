#include <ZEBPlatform/AddressBook/AuthorizationPrivate.h>
#include <ZEBPlatform/AddressBook/CNError.h>
#include <ZEBPlatform/AddressBook/HostConfigurationPrivate.h>
#include <ZEBPlatform/AddressBook/LoggingPrivate.h>
#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Foundation/Format.h>
#include <ZEBPlatform/Linux/detail/FileReading.h>
#include <ZEBPlatform/Linux/detail/Folder.h>
#include <ZEBPlatform/Linux/detail/PrivateFiles.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace zeb::detail {

namespace {

namespace fs = std::filesystem;

constexpr const char* sourceFile = "ZEBPlatform/AddressBook/Authorization";
constexpr std::string_view authorizedText = "authorized\n";
constexpr std::string_view deniedText = "denied\n";
constexpr std::size_t maxFileSize = 64;

using Completion = Block<void(bool isGranted, const NSError& error)>;

struct UnstoredAnswer {
  std::string file;
  CNAuthorizationStatus answer;
};

struct State {
  Lock lock;
  /// Whether `answer` is what the file says.
  bool isRead ZEB_GUARDED_BY(lock) = false;
  std::optional<CNAuthorizationStatus> answer ZEB_GUARDED_BY(lock);
  /// Holds where the file says nothing.
  std::optional<UnstoredAnswer> unstored ZEB_GUARDED_BY(lock);
  /// Counts the moments when knowledge became outdated, so that a thread that read the file before
  /// does not store what it found.
  std::uint64_t generation ZEB_GUARDED_BY(lock) = 0;
  bool isAsking ZEB_GUARDED_BY(lock) = false;
  std::vector<Completion> waiting ZEB_GUARDED_BY(lock);
};

State& state() {
  static NeverDestroyed<State> instance;
  return *instance;
}

std::string reasonToAskAgain(int failure) {
  switch (failure) {
    case 0:
      return "unknown content";
    case ELOOP:
      return "links are not followed";
    case EPERM:
      return "another user could have changed it";
    default:
      return textOfErrorNumber(failure);
  }
}

std::optional<CNAuthorizationStatus> readAnswer(const std::string& path) {
  if (path.empty()) return std::nullopt;
  char content[maxFileSize + 1];
  std::size_t count = 0;
  const int failure = readProtectedFile(path, Protection::fromChanges,
                                        std::as_writable_bytes(std::span(content)), count);
  const std::string_view text(content, count);
  if (!failure && text == authorizedText) return CNAuthorizationStatusAuthorized;
  if (!failure && text == deniedText) return CNAuthorizationStatusDenied;
  if (failure != ENOENT && failure != ENOTDIR) {
    logAddressBook(OLGLevelWarning, sourceFile, "readAnswer", __LINE__,
                   formattedText("%s does not hold the user's answer (%s); the user is asked again",
                                 {path, reasonToAskAgain(failure)}));
  }
  return std::nullopt;
}

/// Replaces the file as a whole, because a file that is not believed may have any owner and mode.
int writeAnswer(const std::string& path, CNAuthorizationStatus answer) {
  if (path.empty()) return ENOENT;
  std::error_code failure;
  fs::create_directories(fs::path(path).parent_path(), failure);
  if (!failure) fs::remove(path, failure);
  if (failure) return failure.value();
  const std::string_view text =
      answer == CNAuthorizationStatusAuthorized ? authorizedText : deniedText;
  return writeNewFile(path, std::as_bytes(std::span(text)));
}

std::optional<CNAuthorizationStatus> rememberedAnswer(const CNHostConfiguration& configuration) {
  State& known = state();
  std::uint64_t generation;
  {
    const LockGuard guard(known.lock);
    if (known.isRead) return known.answer;
    generation = known.generation;
  }
  const std::string file = authorizationFile(configuration);
  auto answer = readAnswer(file);
  const LockGuard guard(known.lock);
  if (!answer && known.unstored && known.unstored->file == file) answer = known.unstored->answer;
  if (known.generation == generation) {
    known.isRead = true;
    known.answer = answer;
  }
  return answer;
}

/// Why no answer could give access; empty if one could.
std::string restriction(const CNHostConfiguration& configuration) {
  if (configuration.policy == CNHostPolicy::restricted)
    return "The host of this program has ruled out access to the contacts.";
  const std::string folder = contactsFolder(configuration);
  if (folder.empty()) {
    return "There is no folder of contacts, because neither XDG_DATA_HOME nor HOME is set to an "
           "absolute path. Set one of them, or contactsFolder with CNSetHostConfiguration().";
  }
  switch (folderAccess(folder)) {
    case FolderAccess::foreign:
      return formattedText(
          "The folder of contacts %s belongs to another user. Change its owner (chown), or choose "
          "another folder.",
          {folder});
    case FolderAccess::unreadable:
      return formattedText(
          "The folder of contacts %s is no folder or cannot be read. Permit that (chmod u+rx), or "
          "choose another folder.",
          {folder});
    case FolderAccess::missing:
    case FolderAccess::readable:
      break;
  }
  return "";
}

NSError denial(const std::string& description) {
  return NSError(CNErrorDomain, CNErrorCodeAuthorizationDenied,
                 NSDictionary{{NSLocalizedDescriptionKey, NSString(description)}});
}

void callLater(Completion completion, bool isGranted, NSError error) {
  if (!completion) return;
  dispatch_async(dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT),
                 [completion = std::move(completion), isGranted, error = std::move(error)] {
                   completion(isGranted, error);
                 });
}

/// One question to the user, owned by the block that takes the answer.
class Question : public NSObject {
 public:
  Question(std::string file, std::uint64_t generation)
      : file_(std::move(file)), generation_(generation) {}
  ~Question() override {
    if (isOpen_) {
      end(false, denial("The user has not answered the question for access to the contacts. "
                        "Request access again when the user wants to use them."));
    }
  }

  void answer(bool isGranted) {
    if (!isOpen_.exchange(false)) return;
    const CNAuthorizationStatus status =
        isGranted ? CNAuthorizationStatusAuthorized : CNAuthorizationStatusDenied;
    const int failure = writeAnswer(file_, status);
    if (failure) {
      logAddressBook(
          OLGLevelError, sourceFile, "Question::answer", __LINE__,
          formattedText("the user's answer could not be stored in \"%s\" (%s); it holds until this "
                        "process ends",
                        {file_, textOfErrorNumber(failure)}));
    }
    {
      State& known = state();
      const LockGuard guard(known.lock);
      if (failure) known.unstored = {file_, status};
      if (known.generation == generation_) {
        known.isRead = true;
        known.answer = status;
        ++known.generation;
      }
    }
    // The host may have ruled out access since the question.
    const std::string reason = restriction(CNCurrentHostConfiguration());
    if (!reason.empty()) return end(false, denial(reason));
    end(isGranted, isGranted ? NSError() : authorizationError(status));
  }

 private:
  static void end(bool isGranted, const NSError& error) {
    std::vector<Completion> waiting;
    {
      State& known = state();
      const LockGuard guard(known.lock);
      known.isAsking = false;
      std::swap(known.waiting, waiting);
    }
    for (Completion& completion : waiting) callLater(std::move(completion), isGranted, error);
  }

  const std::string file_;
  const std::uint64_t generation_;
  std::atomic<bool> isOpen_{true};
};

}  // namespace

CNAuthorizationStatus authorizationStatus() {
  const CNHostConfiguration configuration = CNCurrentHostConfiguration();
  if (!restriction(configuration).empty()) return CNAuthorizationStatusRestricted;
  return rememberedAnswer(configuration).value_or(CNAuthorizationStatusNotDetermined);
}

NSError authorizationError(CNAuthorizationStatus status) {
  if (status == CNAuthorizationStatusRestricted)
    return denial(restriction(CNCurrentHostConfiguration()));
  if (status == CNAuthorizationStatusDenied) {
    return denial(
        "The user has refused access to the contacts. To ask again, call "
        "forgetAuthorizationForEntityType() first, when the user wants it.");
  }
  return denial(
      "The user has not been asked for access to the contacts yet. Call "
      "requestAccessForEntityType() first.");
}

void requestAuthorization(Completion completion) {
  const CNHostConfiguration configuration = CNCurrentHostConfiguration();
  const CNAuthorizationStatus status = authorizationStatus();
  if (status != CNAuthorizationStatusNotDetermined) {
    const bool isGranted = status == CNAuthorizationStatusAuthorized;
    return callLater(std::move(completion), isGranted,
                     isGranted ? NSError() : authorizationError(status));
  }
  if (!configuration.accessPrompt) {
    return callLater(std::move(completion), false,
                     denial("Nobody can ask the user for access to the contacts. Set accessPrompt "
                            "with CNSetHostConfiguration() before requesting access."));
  }
  std::uint64_t generation;
  {
    State& known = state();
    LockGuard guard(known.lock);
    if (known.isRead && known.answer) {  // given since the status was looked at
      guard.unlock();
      return requestAuthorization(std::move(completion));
    }
    known.waiting.push_back(std::move(completion));
    if (std::exchange(known.isAsking, true)) return;
    generation = known.generation;
  }
  configuration.accessPrompt(
      CNEntityTypeContacts,
      [question = makeRef<Question>(authorizationFile(configuration), generation)](bool isGranted) {
        question->answer(isGranted);
      });
}

bool forgetAuthorization(NSError* error) {
  const std::string path = authorizationFile(CNCurrentHostConfiguration());
  std::error_code failure;
  fs::remove(path, failure);
  if (failure) {
    if (error) {
      *error = NSError(
          NSPOSIXErrorDomain, failure.value(),
          NSDictionary{{NSFilePathErrorKey, NSString(path)},
                       {NSLocalizedDescriptionKey,
                        NSString::stringWithFormat("The user's answer in %s could not be removed "
                                                   "(%s).",
                                                   path, failure.message())}});
    }
    return false;
  }
  {
    State& known = state();
    const LockGuard guard(known.lock);
    known.unstored.reset();
  }
  readAuthorizationAgain();
  return true;
}

void readAuthorizationAgain() {
  State& known = state();
  const LockGuard guard(known.lock);
  ++known.generation;
  known.isRead = false;
}

}  // namespace zeb::detail
