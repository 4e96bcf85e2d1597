#include <ZEBPlatform/Foundation/Format.h>
#include <ZEBPlatform/Security/SecBase.h>

namespace zeb {

NSString SecCopyErrorMessageString(OSStatus status) {
  switch (status) {
    case errSecSuccess:
      return nullptr;
    case errSecUnimplemented:
      return "This platform does not serve requests of this kind.";
    case errSecDiskFull:
      return "The disk is full. Free space and try again.";
    case errSecIO:
      return "Reading or writing the keychain failed. Look at the system's log for faults of the "
             "disk.";
    case errSecParam:
      return "An argument is nil, of the wrong kind, unknown, or contradicts another one. Correct "
             "the call.";
    case errSecWrPerm:
      return "The keychain may be read but not written. Check the permissions of its folder and "
             "of all files in it.";
    case errSecAllocate:
      return "There is not enough memory.";
    case errSecNotAvailable:
      return "The keychain cannot be reached. Check that its folder or service exists and may be "
             "used, that its files belong to their owner alone, and that no other process keeps "
             "it busy.";
    case errSecAuthFailed:
      return "The master key is not the one that the keychain was made with. Supply that one.";
    case errSecInvalidKeychain:
      return "The keychain is damaged, or is a file of another kind. Restore it from a copy, or "
             "move it away.";
    case errSecDuplicateItem:
      return "The keychain has an item of this identity already. Update or delete that one.";
    case errSecItemNotFound:
      return "The keychain has no such item.";
    case errSecInteractionNotAllowed:
      return "The keychain is locked and cannot ask the user to unlock it. Unlock it and try "
             "again.";
    case errSecDecode:
      return "A stored value was damaged or changed outside. Delete the item and store it again.";
    default:
      return NSString::stringWithFormat("The keychain failed with the status %d.", status);
  }
}

}  // namespace zeb
