#pragma once

#include <cstdint>
#include <string>

namespace zeb {

/// A lock between processes on a file or folder that exists (flock). Only programs that take the
/// same lock respect it. The system releases it when its process ends, however that happens. A
/// child that is forked while the lock is held does not own it, but keeps it if the parent ends
/// without destroying this object. One thread at a time; two objects of one process exclude each
/// other.
class FileLock {
 public:
  enum class Mode : std::uint8_t {
    exclusive,
    shared,  ///< at the same time as other owners of shared locks
  };

  FileLock() = default;
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;
  /// Releases the lock.
  ~FileLock();

  /// Waits for the lock at most as long as stated. Returns 0 or the error number; EWOULDBLOCK if
  /// another owner kept the lock. The file is opened for reading, so that files in read-only
  /// folders can be locked. Called once.
  int acquire(const std::string& path, double maxSeconds, Mode mode = Mode::exclusive);

 private:
  int descriptor_ = -1;
};

}  // namespace zeb
