#pragma once

#include <cstdint>

namespace zeb {

/// The domain of the address book's errors.
extern const char* const CNErrorDomain;

enum CNErrorCode : std::int64_t {
  /// The folder of the address book cannot be read; the underlying error is the system's.
  CNErrorCodeDataAccessError = 2,
  /// The user, or the host, does not let the program read the contacts. The description says what
  /// to do about it.
  CNErrorCodeAuthorizationDenied = 100,
  /// There is no container with the identifier.
  CNErrorCodeRecordDoesNotExist = 200,
};

}  // namespace zeb
