#pragma once

#include <optional>

#include "Files.h"
#include "Steps.h"

namespace zeb::timeline {

/// The account that a real reader would receive its feed for. Its token is kept in a keychain in a
/// folder, which is the place of the process's keychain from now on. One object per process; main
/// thread only.
class Account {
 public:
  /// Null means a temporary folder, which is removed at the end. Throws std::exception if the
  /// keychain cannot be opened.
  explicit Account(const std::string* folder);
  Account(const Account&) = delete;
  Account& operator=(const Account&) = delete;
  ~Account();

  /// A step that fetches the token. If there is none, makes one and stores it. Throws NSError.
  void signIn(Steps& steps);

 private:
  std::optional<TemporaryDirectory> temporary_;
};

}  // namespace zeb::timeline
