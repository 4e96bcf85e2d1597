#pragma once

#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Memory/NSObject.h>

#include <cstdint>

namespace zeb {

class ObjectiveCObserverQueue;

/// The dispatch queue that observers are called on. An observable keeps one entry for each
/// `ObserverQueue` object that was ever used with it, and posts once to each for every value: reuse
/// one object for all observers that share a queue. Two objects that wrap the same dispatch queue
/// count as two, deliberately. Immutable; any thread.
class ObserverQueue final : public NSObject {
 public:
  /// A nil queue throws NSException (NSInvalidArgumentException).
  explicit ObserverQueue(dispatch_queue_t dispatchQueue);

  /// The shared one for the main dispatch queue.
  static const Ref<ObserverQueue>& mainQueue();

  const dispatch_queue_t& queue() const noexcept { return queue_; }

  /// This queue for callers of the dynamic runtime.
  Ref<ObjectiveCObserverQueue> objectiveCObserverQueue() const;

  /// The address.
  std::intptr_t hashValue() const noexcept { return reinterpret_cast<std::intptr_t>(this); }
  /// Identity.
  bool operator==(const ObserverQueue& other) const noexcept { return this == &other; }

 private:
  const dispatch_queue_t queue_;
};

}  // namespace zeb
