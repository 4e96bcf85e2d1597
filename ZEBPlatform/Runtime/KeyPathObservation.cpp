#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Runtime/NSKeyValueCoding.h>
#include <ZEBPlatform/Runtime/ObjectObserversPrivate.h>

#include <algorithm>

namespace zeb::detail {

KeyPathObservation::KeyPathObservation(const Ref<NSObject>& object,
                                       const ProtocolRef<NSKeyValueObserver>& observer,
                                       const NSString& keyPath, NSKeyValueObservingOptions options,
                                       void* context)
    : observer_(observer),
      observerAddress_(observer.get()),
      keyPath_(keyPath.copy()),
      options_(options),
      context_(context) {
  for (const Value& key : keyPath_.componentsSeparatedByString(".")) keys_.emplace_back(key);
  if (keys_.size() > 1) object_ = object;
}

bool KeyPathObservation::isOf(const NSKeyValueObserver* observer, const NSString& keyPath,
                              const std::optional<void*>& context) const noexcept {
  return observer == observerAddress_ && keyPath_ == keyPath && (!context || *context == context_);
}

Value KeyPathObservation::valueFrom(const Value& object, std::size_t level) const {
  Value value = object;
  for (; level < keys_.size(); ++level) value = valueForKey(value, keys_[level]);
  return value;
}

void KeyPathObservation::followPath() {
  std::uint64_t move;
  {
    const LockGuard guard(pathLock_);
    move = ++latestMove_;
  }
  std::vector<Ref<NSObject>> objects;
  Value value = object();
  for (std::size_t level = 0; !isLast(level); ++level) {
    value = valueForKey(value, keys_[level]);
    if (!value.isObject()) break;
    objects.push_back(value.object());
  }
  // A thread that looked later saw newer objects and moves the entries to these.
  std::vector<Ref<NSObject>> left;
  const LockGuard guard(pathLock_);
  if (move == latestMove_ && !hasLeft_) left = moveTo(objects);
}

void KeyPathObservation::leavePath() {
  std::vector<Ref<NSObject>> left;
  const LockGuard guard(pathLock_);
  hasLeft_ = true;
  left = moveTo({});
}

std::vector<Ref<NSObject>> KeyPathObservation::moveTo(const std::vector<Ref<NSObject>>& objects) {
  std::vector<Ref<NSObject>> left;
  std::size_t same = 0;
  for (std::size_t place = 0; place < objectsOnPath_.size(); ++place) {
    Ref<NSObject> object = objectsOnPath_[place].lock();
    if (object && same == place && place < objects.size() && objects[place] == object) {
      ++same;
    } else if (object) {
      ObjectObservers::of(*object).remove(*this, place + 1);
    }
    left.push_back(std::move(object));
  }
  objectsOnPath_.resize(same);
  for (std::size_t place = same; place < objects.size(); ++place) {
    NSObject& object = *objects[place];
    ObjectObservers::of(object).add(object, keys_[place + 1],
                                    makeRef<KeyObserver>(Ref<KeyPathObservation>(this), place + 1));
    objectsOnPath_.emplace_back(objects[place]);
  }
  return left;
}

}  // namespace zeb::detail
