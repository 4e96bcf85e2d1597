#pragma once

#include <ZEBPlatform/Linux/detail/EventDescriptor.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zeb {

enum class FolderEvent : std::uint8_t {
  changed,
  stopped,
  /// The system's limits for watches do not permit to go on.
  failed,
};

/// Tells when files of one folder are made, changed, renamed or removed, or when their permissions
/// change (inotify). The folder need not exist, nor permit reading: its making, its removal, its
/// replacement and a change of its permissions are changes, too. They are seen through the nearest
/// folder above it that can be read, so a folder further above must not be renamed. Limit: where a
/// folder above permits entering but not reading (mode 0711), entries that are
/// made, renamed or removed in it are not noticed, except that the watched folder itself
/// disappears.
class FolderWatch {
 public:
  /// `path` is absolute. Only files whose names `isWanted` accepts count. Changes count from here
  /// on.
  FolderWatch(std::string path, bool (*isWanted)(std::string_view name));
  FolderWatch(const FolderWatch&) = delete;
  FolderWatch& operator=(const FolderWatch&) = delete;
  ~FolderWatch();

  /// False if the system's limits for descriptors or watches are reached; then the object must not
  /// be used.
  bool isWatching() const noexcept { return descriptor_ >= 0; }

  /// Blocks until something has changed, and then until nothing has changed for 100 ms, but not
  /// longer than one second. One thread.
  FolderEvent wait();

  /// Ends the present wait, and all later ones at once. Any thread.
  void stop() noexcept { stopping_.signal(); }

 private:
  enum class Readable : std::uint8_t { nothing, events, stop };

  bool watchAgain();
  bool watchNearestFolderAbove(const std::string& path);
  Readable poll(int milliseconds) const noexcept;
  /// Whether something has changed. `isLost` becomes true if the watches have to be set again.
  bool readEvents(bool& isLost);

  const std::string path_;
  bool (*const isWanted_)(std::string_view name);
  EventDescriptor stopping_;
  int descriptor_;
  int folder_ = -1;  ///< the watch of the folder itself; negative while there is no folder
  /// The watches of folders above, and the names in them that are awaited.
  std::vector<std::pair<int, std::string>> above_;
};

}  // namespace zeb
