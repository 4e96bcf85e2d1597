#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/RunLoop/LoopInboxPrivate.h>
#include <ZEBPlatform/RunLoop/RunLoopModesPrivate.h>

#include <cstddef>
#include <vector>

namespace zeb::detail {

/// The posted blocks that have reached the loop's thread, in order. For that thread only.
class PendingBlocks {
 public:
  std::size_t count() const noexcept { return items_.count; }

  void append(const ItemList& newer) noexcept;
  /// Takes out and answers the first block that may run in the mode, or null.
  WorkItem* takeFirst(const RunLoopMode& mode);
  /// Whether there is one.
  bool hasAny(const RunLoopMode& mode) { return find(mode).item; }
  /// Drops those with the target.
  void drop(const void* target) noexcept;
  void dropAll() noexcept;

  /// To be called when modes have become common.
  void forgetWhatWasSkipped() noexcept { skipped_.clear(); }

 private:
  /// The blocks up to this one are not for the mode; kept so that a storm of blocks for another mode is looked
  /// through only once.
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

  /// For more modes the list is looked through anew.
  static constexpr std::size_t maxSkipped = 16;

  ItemList items_;
  std::vector<Skipped> skipped_;
};

}  // namespace zeb::detail
