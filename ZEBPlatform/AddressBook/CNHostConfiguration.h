#pragma once

#include <ZEBPlatform/AddressBook/CNAuthorization.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/Block.h>

#include <cstdint>

namespace zeb {

/// Asks the user whether this program may read the contacts, and calls `answer` with the user's
/// decision, at once or later, on any thread. Only the first call of `answer` counts. If all copies
/// of `answer` are destroyed without a call (the dialog was closed), the user has not decided: the
/// requests are denied, and the next request asks again.
///
/// The prompt is called on the thread that requests access, with no lock held. It should return
/// soon and show its dialog where the program's user interface lives.
using CNAccessPrompt = Block<void(CNEntityType entityType, Block<void(bool isGranted)> answer)>;

/// Who decides about access to the contacts.
enum class CNHostPolicy : std::uint8_t {
  /// The user, whose answer is remembered.
  askUser,
  /// The host has ruled it out (a managed device, parental controls): the status is
  /// CNAuthorizationStatusRestricted, and nobody is asked.
  restricted,
};

/// What the host decides about the address book.
struct CNHostConfiguration {
  /// The absolute path of the folder of .vcf files. Nil means the folder "contacts" of the user's
  /// data folder: $XDG_DATA_HOME/contacts, or ~/.local/share/contacts if the variable is not set to
  /// an absolute path. The folder need not exist; a folder that does not exist has no contacts.
  NSString contactsFolder;
  /// The absolute path of the file that remembers the user's answer for this program. Nil means
  /// "zebutilities/contacts-access/<name of the program's file>" in the user's configuration
  /// folder: $XDG_CONFIG_HOME, or ~/.config. A file that is a link, that its group or others may
  /// write, or that belongs to another user than root and the process's own one is not believed: a
  /// warning is logged, the user is asked again, and the answer replaces the file.
  NSString authorizationFile;
  /// Nil if the host cannot ask.
  CNAccessPrompt accessPrompt;
  CNHostPolicy policy = CNHostPolicy::askUser;
};

/// Replaces the configuration of the process. Meant to be called once, before the first store is
/// made. Later calls take effect at once: stores read and watch the new folder, and the status
/// follows the new policy and file. Before the call returns, CNContactStoreDidChangeNotification is
/// posted for each store on the calling thread. A prompt that waits for its answer goes on; under
/// the policy `restricted` its answer is stored, and its requests are denied. Any thread.
void CNSetHostConfiguration(const CNHostConfiguration& configuration);

/// The configuration that was set last. Any thread.
CNHostConfiguration CNCurrentHostConfiguration();

}  // namespace zeb
