#pragma once

#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/WeakRef.h>
#include <ZEBPlatform/Memory/detail/ObserverIndex.h>
#include <ZEBPlatform/Notifications/NSNotification.h>
#include <ZEBPlatform/Operations/NSOperationQueue.h>

#include <unordered_map>

namespace zeb {

/// Passes notifications from posters to observers that do not know each other.
///
/// An observer is added with two filters. A name: nil takes every name. An object: nil takes every
/// object, any other is compared by identity (`Value::isIdenticalTo`) with the posted one. An
/// `NSObject` as filter is not kept alive, other values are.
///
/// Any thread may call anything, also from inside an observer's block; no lock is held while a
/// block runs. Without a queue, observers are called on the posting thread before the post returns,
/// in no promised order; an exception that an observer throws reaches the poster, and the observers
/// after it are not called. With a queue, the block is added to it as an operation and the post
/// does not wait, not even if it comes from that queue: a poster that waited would hang whenever
/// the queue waits for the poster.
///
/// A post reaches the observers that are registered when it begins. An observer that is removed
/// before its turn is not called, on a queue neither; a call that has begun on another thread goes
/// on, and removing does not wait for it.
class NSNotificationCenter : public NSObject {
 public:
  using Handler = Block<void(const Ref<NSNotification>& notification)>;

  /// An empty centre; most programs need only the default one.
  NSNotificationCenter();
  ~NSNotificationCenter() override;

  /// The process's shared centre.
  static const Ref<NSNotificationCenter>& defaultCenter();

  /// Calls the block until the observer dies or is removed. The observer is held weakly, and
  /// strongly while the block runs, so that the block may use a plain pointer to it. A nil observer
  /// or block does nothing.
  void addObserver(const Ref<NSObject>& observer, Handler block, const NSString& name,
                   const Value& object = nullptr);

  /// Calls the block until the answered token is removed; dropping the token does not end that. A
  /// nil queue means the posting thread. A nil block does nothing and answers nil.
  Ref<NSObject> addObserverForName(const NSString& name, const Value& object,
                                   const Ref<NSOperationQueue>& queue, Handler block);

  /// Removes all additions of the observer, or the token's one. Nil or an unknown object does
  /// nothing. Observers that die need not be removed.
  void removeObserver(const Ref<NSObject>& observer) { removeObserver(observer, nullptr, nullptr); }
  /// Removes those with this name and this object as filters; nil stands for all names or all
  /// objects.
  void removeObserver(const Ref<NSObject>& observer, const NSString& name, const Value& object);

  /// A nil notification or name throws NSException (NSInvalidArgumentException).
  void postNotification(const Ref<NSNotification>& notification);
  void postNotificationName(const NSString& name, const Value& object = nullptr,
                            const NSDictionary& userInfo = nullptr);

 private:
  class Entry;
  struct Removed;
  using List = detail::ObserverList<Entry>;

  void add(const void* observer, const Ref<Entry>& entry) ZEB_EXCLUDES(lock_);
  void remove(Entry& entry, Removed& removed) ZEB_REQUIRES(lock_);

  detail::Lock lock_;
  /// The entries by the name that they are for; those for every name are under nil.
  std::unordered_map<NSString, List> lists_ ZEB_GUARDED_BY(lock_);
  detail::ObserverIndex<Entry> index_ ZEB_GUARDED_BY(lock_);
};

}  // namespace zeb
