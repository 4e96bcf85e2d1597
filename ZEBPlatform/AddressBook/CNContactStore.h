#pragma once

#include <ZEBPlatform/AddressBook/CNAuthorization.h>
#include <ZEBPlatform/AddressBook/CNContact.h>
#include <ZEBPlatform/AddressBook/CNError.h>
#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/Ref.h>

namespace zeb {

/// Posted on the default notification centre after the address book has changed. The object is the
/// store; if there are several stores, it is posted once for each. Changes of a burst are combined:
/// it is posted when no change has come for 100 ms, at the latest one second after the first one.
/// The thread is the address book's own; observers should return soon, and an exception out of one
/// ends the process. CNSetHostConfiguration() posts at once, on its caller's thread.
extern const char* const CNContactStoreDidChangeNotification;

namespace detail {
class StoreWatch;
}

/// The user's address book: a folder whose .vcf files hold vCards of version 3.0 (RFC 2426) or 4.0
/// (RFC 6350). `CNHostConfiguration` says which folder that is. Any thread may call anything.
///
/// **Files.** A file has one card or several. All regular files count whose names end in ".vcf"
/// (in any case) and do not begin with "."; links are not followed, and folders inside the folder
/// are not searched. A file of more than 64 MiB is left out. The contacts come in the order of the
/// files' names (compared byte by byte) and of the cards in each file.
///
/// **Cards.** A contact's identifier is its UID, else the name of its file, followed by "#2", "#3"
/// and so on for further cards without UID in the same file, and by "#" if another card has that
/// UID. Cards with the same UID, in whichever
/// files, are one unified contact: it has the names of the first card that has a name, and the
/// phone numbers and e-mail addresses of all of them, each once. Cards of groups (KIND:group) are
/// no contacts, and their members are not looked at.
///
/// A phone number is the text as it was entered. From a URI the scheme "tel:" is removed, its
/// extension (";ext=12") becomes ",12", its other parameters are removed, and percent encoding is
/// decoded. From an e-mail address "mailto:" is removed. Values in base64 or quoted-printable are
/// taken as they stand.
///
/// **Broken cards** are left out, and the other cards of the same file still count. A card is
/// broken if its END is missing (only the end of that line may be), if it states another version
/// than 3.0 and 4.0, or if it has neither a name nor an address nor a number. Bytes that are not
/// UTF-8 do not make a card broken; they are replaced by U+FFFD. (Of other encodings, only a
/// CHARSET parameter with ISO-8859-1 is understood.) Each file with something broken, and each that
/// cannot be read, is logged once on the channel CNLoggingChannel, and again only after the file
/// has changed.
///
/// **Watching.** While there is a store, one thread of the process watches the folder with inotify,
/// also if it is deleted and made again. A folder further above that is renamed, and a link above
/// that is made to lead elsewhere, are not noticed. Without a store nothing is watched. If the
/// system's limits do not let the process watch, a warning is logged and no change is posted until
/// another store is made or the configuration is set, either of which tries again.
class CNContactStore final : public NSObject {
 public:
  CNContactStore();
  ~CNContactStore() override;

  /// Whether the program may read the contacts. See CNAuthorization.h. The user's answer is read
  /// from its file at the first call and then kept by the process. It is an agreement between
  /// well-behaved programs and their user: the system does not enforce it.
  static CNAuthorizationStatus authorizationStatusForEntityType(CNEntityType entityType);

  /// Asks the user for access unless the status is determined, and calls the block once with the
  /// result, on a global queue and never before this function has returned. While a question waits
  /// for its answer, further requests wait for the same answer.
  ///
  /// The answer is stored in the file that CNHostConfiguration.h describes, which only the user can
  /// read and write, and is never asked for again; `forgetAuthorizationForEntityType` undoes that.
  /// If it cannot be stored, it holds for this process, and an error is logged.
  ///
  /// The error is nil if access is granted. It has the code CNErrorCodeAuthorizationDenied and says
  /// what to do. Without a prompt of the host there is nobody to ask: the request is denied, and
  /// the status stays "not determined". If the prompt throws, the request is denied
  /// without remembering that, and the exception leaves this function. A nil block is allowed.
  /// Another entity type throws NSException (NSInvalidArgumentException), also in the functions
  /// beside this one.
  void requestAccessForEntityType(CNEntityType entityType,
                                  Block<void(bool isGranted, const NSError& error)> completion);

  /// For a program's settings: forgets the user's answer, in the process and in the file, so that
  /// the next request asks again. Other processes of the program keep the answer that they have
  /// read. False and an error if the file cannot be removed.
  static bool forgetAuthorizationForEntityType(CNEntityType entityType, NSError* error = nullptr);

  /// The identifier of the one container, which holds all contacts of the folder. Never nil.
  NSString defaultContainerIdentifier() const;

  /// The contacts (elements are `CNContact`s) that the predicate chooses, with the properties that
  /// `keysToFetch` names: its elements are keys or `CNKeyDescriptor`s. Reads the files each time,
  /// on the calling thread; keep the answer. A file that changes meanwhile is read again.
  ///
  ///     for (const Value& element : contacts) {
  ///       const Ref<CNContact> contact = element.object<CNContact>();
  ///       …
  ///     }
  ///
  /// Nil and an error of CNErrorDomain if the status is not CNAuthorizationStatusAuthorized, if the
  /// container is unknown, or if the folder cannot be read. A folder that does not exist has no
  /// contacts. Uses at most 32 times the memory of the files. A nil predicate, and elements that
  /// are not keys, throw NSException (NSInvalidArgumentException).
  NSArray unifiedContactsMatchingPredicate(const Ref<CNContactPredicate>& predicate,
                                           const NSArray& keysToFetch,
                                           NSError* error = nullptr) const;

 private:
  friend class detail::StoreWatch;
};

/// The channel of the address book's log lines.
extern const char* const CNLoggingChannel;

}  // namespace zeb
