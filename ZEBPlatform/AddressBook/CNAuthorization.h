#pragma once

#include <cstdint>

namespace zeb {

/// What a program asks access to.
enum CNEntityType : std::int64_t {
  CNEntityTypeContacts = 0,
};

enum CNAuthorizationStatus : std::int64_t {
  /// The user has not been asked, or has not answered yet.
  CNAuthorizationStatusNotDetermined = 0,
  /// The program cannot get access, whatever the user answers: the host has ruled it out, or the
  /// folder of the address book belongs to another user or cannot be read.
  CNAuthorizationStatusRestricted = 1,
  /// The user has refused.
  CNAuthorizationStatusDenied = 2,
  CNAuthorizationStatusAuthorized = 3,
};

}  // namespace zeb
