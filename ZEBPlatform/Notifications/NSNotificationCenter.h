#pragma once

#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/WeakRef.h>
#include <ZEBPlatform/Notifications/NSNotification.h>
#include <ZEBPlatform/Operations/NSOperationQueue.h>

#include <mutex>
#include <unordered_map>
#include <vector>

namespace zeb {

/// Tells everybody who asked what happened, without the parties knowing each other.
///
/// A registration has two filters. A name: nil takes every name. An object: nil takes every object, any
/// other is compared by identity (`Value::isIdenticalTo`) with the one that is posted. An `NSObject` as
/// filter is not kept alive, other values are.
///
/// Any thread may call anything, also from inside an observer's block; no lock is held while one runs.
/// Without a queue, observers are called on the posting thread before the post returns, in no promised
/// order; what one throws reaches the poster, and the rest are not called. With a queue, the block is put on
/// it as an operation and the post does not wait, not even when it comes from that queue: a poster that
/// waited would hang whenever the queue waits for the poster.
///
/// Posting reaches who is registered when it begins. Who is removed before its turn is not called, on a queue
/// neither; a call that has begun on another thread goes on, and removing does not wait for it.
class NSNotificationCenter : public NSObject {
 public:
  using Handler = Block<void(const Ref<NSNotification>& notification)>;

  /// An empty centre; most programs need only the default one.
  NSNotificationCenter();
  ~NSNotificationCenter() override;

  /// The process's shared centre.
  static const Ref<NSNotificationCenter>& defaultCenter();

  /// Calls the block for as long as the observer lives or until it is removed. The observer is held weakly,
  /// and strongly while the block runs, so that the block may use a plain pointer to it. A nil observer or
  /// block: nothing.
  void addObserver(const Ref<NSObject>& observer, Handler block, const NSString& name,
                   const Value& object = nullptr);

  /// Calls the block until the answered token is removed; dropping the token does not end it. A nil queue
  /// means the posting thread. A nil block: nothing, and a nil token.
  Ref<NSObject> addObserverForName(const NSString& name, const Value& object,
                                   const Ref<NSOperationQueue>& queue, Handler block);

  /// Ends all registrations of the observer or token. Nil or a stranger: nothing. Observers that die need
  /// not be removed.
  void removeObserver(const Ref<NSObject>& observer) { removeObserver(observer, nullptr, nullptr); }
  /// Ends those with this name and this object as filters; nil stands for all names or all objects.
  void removeObserver(const Ref<NSObject>& observer, const NSString& name, const Value& object);

  /// A nil notification or name throws NSException (NSInvalidArgumentException).
  void postNotification(const Ref<NSNotification>& notification);
  void postNotificationName(const NSString& name, const Value& object = nullptr,
                            const NSDictionary& userInfo = nullptr);

 private:
  class Registration;
  struct List;
  using Lists = std::unordered_map<NSString, Ref<List>>;
  using OwnRegistrations = std::vector<Ref<Registration>>;
  using Registrations = std::unordered_map<const void*, OwnRegistrations>;

  /// What goes away with a removal. It is released after the lock, because blocks, filters and tokens own
  /// objects whose destructors may call the centre.
  struct Removed {
    OwnRegistrations registrations;
    std::vector<Ref<List>> outdatedLists;
  };

  void add(const void* observer, const Ref<Registration>& registration);
  void removeDead();
  template <class Predicate>
  Registrations::iterator removeFrom(Registrations::iterator own, Removed& removed,
                                     const Predicate& isUnwanted);
  void removeOne(OwnRegistrations& own, const Ref<Registration>& one, Removed& removed);
  void noteGap(Lists::iterator list, Removed& removed);
  static void releaseBlocks(const Removed& removed);

  std::mutex mutex_;
  Lists listsByName_;              ///< under nil: those for every name
  Registrations registrationsOf_;  ///< by the observer's identity, which outlives it
  std::size_t count_ = 0;
  std::size_t countForSweep_;  ///< at how many registrations the dead ones are looked for
};

}  // namespace zeb
