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

/// How many of a queue's blocks may run at once: one, or several with barriers between them.
enum class DispatchQueueKind : std::uint8_t { serial, concurrent };

/// Quality of service: how urgent a queue's work is. More urgent work that waits is taken first;
/// nothing that runs is interrupted for it.
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
/// Queues are used through the functions below, from any thread. A queue lives as long as somebody
/// refers to it or it has work: releasing it loses no block. No lock is held while a block runs. A
/// block that throws ends the process, as a thread's function would. Work that is still queued when
/// the process exits may not run.
///
/// A thread that waits for a queue (`dispatch_sync`, `dispatch_barrier_sync`) has that queue's
/// blocks run ahead of all other work of the pool, on a thread of a reserve if all others are busy
/// or blocked. So what it waits for never stands behind blocks of other queues, on whatever thread
/// it waits. What can still use up the pool (512 threads, and as many of the reserve) is blocks
/// that wait in other ways for blocks that have not begun: for a semaphore, an operation, a lock or
/// input of the program's own.
class DispatchQueue : public NSObject {
 public:
  /// For people: logs and debuggers. UTF-8, need not be unique.
  const std::string& label() const noexcept { return label_; }

  // What the functions below call; each takes the item over.
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

dispatch_queue_t dispatch_queue_create(std::string_view label,
                                       DispatchQueueKind kind = DispatchQueueKind::serial,
                                       dispatch_qos_class_t qos = QOS_CLASS_DEFAULT);
/// A null label is "".
inline dispatch_queue_t dispatch_queue_create(const char* label,
                                              DispatchQueueKind kind = DispatchQueueKind::serial,
                                              dispatch_qos_class_t qos = QOS_CLASS_DEFAULT) {
  return dispatch_queue_create(label ? std::string_view(label) : std::string_view(), kind, qos);
}

/// The process's shared concurrent queue of a priority or of a quality of service (both kinds of
/// number are understood); nil for any other number. Barriers on it are plain blocks: it is
/// everybody's. `flags` must be 0.
dispatch_queue_t dispatch_get_global_queue(std::int64_t priorityOrQos, std::uintptr_t flags = 0);

/// The serial queue of the main thread: its blocks run while the main run loop runs in a common
/// mode. A run loop that is run from inside one of its blocks does not run the next one.
const dispatch_queue_t& dispatch_get_main_queue();

/// The queue's label; "" for nil.
const char* dispatch_queue_get_label(const dispatch_queue_t& queue) noexcept;

/// Runs the block later, in the queue's order, and returns at once. The block (anything that can be
/// called without arguments) is moved in and destroyed right after its run. Here and below: a nil
/// block is nothing to do, whatever the queue; a block and a nil queue stop the process with a
/// message that names the function.
template <class Callable>
void dispatch_async(const dispatch_queue_t& queue, Callable&& block) {
  if (detail::isNilCallable(block)) return;
  detail::notNil(queue, "dispatch_async", "queue")
      .async(*detail::newWorkItem(std::forward<Callable>(block)));
}

inline void dispatch_async(const dispatch_queue_t&, std::nullptr_t) noexcept {}

/// Runs the block after the queue's earlier blocks and returns when it is done. It runs on the
/// calling thread where that is possible (always but for the main queue), and may throw: the
/// exception goes to the caller. From a block of the same serial queue it would wait for itself,
/// which stops the process with a message instead.
inline void dispatch_sync(const dispatch_queue_t& queue, FunctionView<void()> block) {
  if (block) detail::notNil(queue, "dispatch_sync", "queue").sync(block);
}

/// On a concurrent queue: the block runs alone, after all earlier blocks and before all later ones.
template <class Callable>
void dispatch_barrier_async(const dispatch_queue_t& queue, Callable&& block) {
  if (detail::isNilCallable(block)) return;
  detail::notNil(queue, "dispatch_barrier_async", "queue")
      .barrierAsync(*detail::newWorkItem(std::forward<Callable>(block)));
}

inline void dispatch_barrier_async(const dispatch_queue_t&, std::nullptr_t) noexcept {}

/// The same, and returns when the block is done; as `dispatch_sync` otherwise.
inline void dispatch_barrier_sync(const dispatch_queue_t& queue, FunctionView<void()> block) {
  if (block) detail::notNil(queue, "dispatch_barrier_sync", "queue").barrierSync(block);
}

}  // namespace zeb
