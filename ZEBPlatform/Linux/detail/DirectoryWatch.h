#pragma once

#include <string>
#include <string_view>

namespace zeb {

/// Tells when entries of one folder are replaced (inotify). One thread at a time.
class DirectoryWatch {
 public:
  /// Changes count from here on.
  explicit DirectoryWatch(const std::string& folder) noexcept;
  DirectoryWatch(const DirectoryWatch&) = delete;
  DirectoryWatch& operator=(const DirectoryWatch&) = delete;
  ~DirectoryWatch();

  /// False if there is no such folder, or if the system's limits for watches or descriptors are
  /// reached; the object must not be used then.
  bool isWatching() const noexcept { return descriptor_ >= 0; }

  /// Blocks until an entry of this name has been created, moved to its place, or closed after
  /// writing. Changes that arrive together count as one. A removal alone does not count. Also
  /// returns true if the system has lost changes. Answers false once the folder is gone.
  bool waitForEntry(std::string_view name) noexcept;

 private:
  int descriptor_;
};

}  // namespace zeb
