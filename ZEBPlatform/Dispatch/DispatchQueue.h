#pragma once

#include <ZEBPlatform/Concurrency/detail/WorkItem.h>
#include <ZEBPlatform/Dispatch/detail/NilArgument.h>
#include <ZEBPlatform/Memory/FunctionView.h>
#include <ZEBPlatform/Memory/NSObject.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace zeb {

/// Whether a queue runs one block at a time, or several at once with barriers between them.
enum class DispatchQueueKind : std::uint8_t { serial, concurrent };

/// Quality of service: the urgency of a queue's work. Of the work that waits, the most urgent is
/// taken first; blocks that run already are not interrupted for it.
enum dispatch_qos_class_t : std::uint32_t {
  QOS_CLASS_BACKGROUND = 0x09,
  QOS_CLASS_UTILITY = 0x11,
  QOS_CLASS_DEFAULT = 0x15,
  QOS_CLASS_USER_INITIATED = 0x19,
  QOS_CLASS_USER_INTERACTIVE = 0x21,
};

/// Priorities of the global queues.
inline constexpr std::int64_t DISPATCH_QUEUE_PRIORITY_HIGH = 2;
inline constexpr std::int64_t DISPATCH_QUEUE_PRIORITY_DEFAULT = 0;
inline constexpr std::int64_t DISPATCH_QUEUE_PRIORITY_LOW = -2;
inline constexpr std::int64_t DISPATCH_QUEUE_PRIORITY_BACKGROUND = INT16_MIN;

/// A first-in-first-out queue of blocks, run by the process's pool of threads: one at a time
/// (serial), or several at once with barriers between them (concurrent). The main queue is run by
/// the main thread.
///
/// Queues are used through the functions below, from any thread. What a thread did before it
/// submitted a block is visible to the block; on a serial queue each block sees the effects of the
/// earlier ones. A queue lives as long as it is referred to or has work: releasing it loses no
/// block. No lock is held while a block runs. A block that throws ends the process, as a thread's
/// function would. Work that is still queued when the process exits may not run.
///
/// While a thread waits for a queue (`dispatch_sync`, `dispatch_barrier_sync`), that queue's blocks
/// run ahead of all other work of the pool, on a thread of a reserve if all other threads are busy
/// or blocked. So such a wait never depends on blocks of other queues, on whatever thread it takes
/// place. The pool has at most 512 threads, and the reserve as many. If all 512 pool threads wait
/// in other ways (for a semaphore, an operation, a lock or input) for a block that is still queued,
/// they deadlock.
class DispatchQueue : public NSObject {
 public:
  /// The name in logs and debuggers. UTF-8, need not be unique.
  const std::string& label() const noexcept { return label_; }

  // The functions below call these. `async` and `barrierAsync` take the item over.
  virtual void async(detail::WorkItem& item) noexcept = 0;
  virtual void sync(FunctionView<void()> block) = 0;
  virtual void barrierAsync(detail::WorkItem& item) noexcept = 0;
  virtual void barrierSync(FunctionView<void()> block) = 0;

 protected:
  explicit DispatchQueue(std::string_view label) : label_(label) {}

 private:
  const std::string label_;
};

using dispatch_queue_t = Ref<DispatchQueue>;

/// A new queue, which the answered reference owns.
[[nodiscard]] dispatch_queue_t dispatch_queue_create(
    std::string_view label, DispatchQueueKind kind = DispatchQueueKind::serial,
    dispatch_qos_class_t qos = QOS_CLASS_DEFAULT);
/// A null label is "".
[[nodiscard]] inline dispatch_queue_t dispatch_queue_create(
    const char* label, DispatchQueueKind kind = DispatchQueueKind::serial,
    dispatch_qos_class_t qos = QOS_CLASS_DEFAULT) {
  return dispatch_queue_create(label ? std::string_view(label) : std::string_view(), kind, qos);
}

/// The process's shared concurrent queue of a priority or of a quality of service (both kinds of
/// number are accepted); nil for any other number, or if `flags` is not 0. Barriers on a shared
/// queue are plain blocks, because they would stop the work of unrelated code.
[[nodiscard]] dispatch_queue_t dispatch_get_global_queue(std::int64_t priorityOrQos,
                                                         std::uintptr_t flags = 0);

/// The serial queue of the main thread. Its blocks run while the main run loop runs in a common
/// mode. A run loop that a block of this queue runs does not run the queue's next block.
[[nodiscard]] const dispatch_queue_t& dispatch_get_main_queue();

/// The queue's label; "" for nil.
const char* dispatch_queue_get_label(const dispatch_queue_t& queue) noexcept;

/// Runs the block later, in the queue's order, and returns at once. The block (anything that can be
/// called without arguments) is moved into the queue and destroyed directly after its run. Here and
/// below, a nil block does nothing, whatever the queue; a block and a nil queue stop the process
/// with a message that names the function.
template <class Callable>
void dispatch_async(const dispatch_queue_t& queue, Callable&& block) {
  if (detail::isNilCallable(block)) return;
  detail::notNil(queue, "dispatch_async", "queue")
      .async(*detail::newWorkItem(std::forward<Callable>(block)));
}

inline void dispatch_async(const dispatch_queue_t&, std::nullptr_t) noexcept {}

/// Runs the block after the queue's earlier blocks and returns when it is done. The block runs on
/// the calling thread, or for the main queue on the main thread, and may throw: the exception goes
/// to the caller. Called from a block of the same serial queue it would wait for itself; the
/// process stops with a message instead.
inline void dispatch_sync(const dispatch_queue_t& queue, FunctionView<void()> block) {
  if (block) detail::notNil(queue, "dispatch_sync", "queue").sync(block);
}

/// Like `dispatch_async`, but on a concurrent queue the block runs alone, after all earlier blocks
/// and before all later ones.
template <class Callable>
void dispatch_barrier_async(const dispatch_queue_t& queue, Callable&& block) {
  if (detail::isNilCallable(block)) return;
  detail::notNil(queue, "dispatch_barrier_async", "queue")
      .barrierAsync(*detail::newWorkItem(std::forward<Callable>(block)));
}

inline void dispatch_barrier_async(const dispatch_queue_t&, std::nullptr_t) noexcept {}

/// Runs such a block and returns when it is done, like `dispatch_sync`.
inline void dispatch_barrier_sync(const dispatch_queue_t& queue, FunctionView<void()> block) {
  if (block) detail::notNil(queue, "dispatch_barrier_sync", "queue").barrierSync(block);
}

}  // namespace zeb
