#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/RunLoop/LoopInboxPrivate.h>
#include <ZEBPlatform/RunLoop/RunLoopModesPrivate.h>

#include <cstddef>
#include <vector>

namespace zeb::detail {

/// The posted blocks that have reached the loop's thread, in order. For that thread only. The loop
/// runs them through `PostedBlock::run`, so that an exception that leaves a block ends the process.
class PendingBlocks {
 public:
  std::size_t count() const noexcept { return items_.count; }

  void append(const ItemList& newer) noexcept;
  /// Removes and returns the first block that may run in the mode, or null.
  WorkItem* takeFirst(const RunLoopMode& mode);
  /// Whether a block may run in the mode.
  bool hasAny(const RunLoopMode& mode) { return find(mode).item; }
  /// Drops the blocks with the target.
  void drop(const void* target) noexcept;
  void dropAll() noexcept;

  /// To be called when a mode has become common, because more blocks may run in it then.
  void forgetWhatWasSkipped() noexcept { skipped_.clear(); }

 private:
  /// No block up to `last` may run in the mode. Remembered so that many blocks for another mode are
  /// searched only once.
  struct Skipped {
    NSString modeName;  // modes come and go, but what may run in one depends on its name alone
    WorkItem* last;
  };
  struct Place {
    WorkItem* previous;
    WorkItem* item;
  };

  Place find(const RunLoopMode& mode);
  void unlink(const Place& place) noexcept;

  /// If more modes are used, the positions of all are forgotten and the list is searched from its
  /// start.
  static constexpr std::size_t maxSkipped = 16;

  ItemList items_;
  std::vector<Skipped> skipped_;
};

}  // namespace zeb::detail
