#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Foundation/NSNull.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBUtilities/Collections/ZEBCircularFIFOBuffer.h>

#include <algorithm>
#include <utility>

namespace zeb {

Ref<ZEBCircularFIFOBuffer> ZEBCircularFIFOBuffer::initWithSize(std::size_t size) {
  if (size == 0) return nullptr;
  return Ref<ZEBCircularFIFOBuffer>::adopt(new ZEBCircularFIFOBuffer(size));
}

void ZEBCircularFIFOBuffer::setSize(std::size_t size) {
  if (size == 0) raiseInvalidArgument("size 0 is not allowed");
  const Ref<ZEBCircularFIFOBuffer> alive(this);  // the delegate may drop the last reference
  const NSArray objects = allObjects();
  const std::size_t dropped = objects.count() - std::min(objects.count(), size);
  size_ = size;
  buffer_.assign(objects.begin() + dropped, objects.end());
  start_ = 0;
  count_ = buffer_.size();
  ++mutatingInteger_;
  for (std::size_t index = 0; index < dropped; ++index) tellDelegate(objects.begin()[index]);
}

void ZEBCircularFIFOBuffer::addObject(Value object) {
  if (object.isNil()) raiseInvalidArgument("nil object is not allowed");
  if (count_ != size_) {
    const std::size_t index = slotIndex(count_);
    if (index >= buffer_.size()) {
      buffer_.push_back(std::move(object));
    } else {
      buffer_[index] = std::move(object);
    }
    ++count_;
    ++mutatingInteger_;
    return;
  }
  const Ref<ZEBCircularFIFOBuffer> alive(this);  // the delegate may drop the last reference
  const Value purged = std::exchange(buffer_[start_], std::move(object));
  start_ = slotIndex(1);
  tellDelegate(purged);
  ++mutatingInteger_;
}

Value ZEBCircularFIFOBuffer::removeObject() {
  if (count_ == 0) return {};
  Value removed = std::exchange(buffer_[start_], NSNull::null());
  start_ = slotIndex(1);
  --count_;
  ++mutatingInteger_;
  return removed;
}

Value ZEBCircularFIFOBuffer::peekObject() const { return count_ ? slot(0) : Value(); }

NSArray ZEBCircularFIFOBuffer::allObjects() const {
  NSMutableArray objects = NSMutableArray::arrayWithCapacity(count_);
  for (std::size_t position = 0; position < count_; ++position) objects.addObject(slot(position));
  return objects.copy();
}

void ZEBCircularFIFOBuffer::removeAllObjects() {
  std::vector<Value> removed;
  removed.swap(buffer_);  // released after the buffer is empty: a release may run any code
  start_ = 0;
  count_ = 0;
  ++mutatingInteger_;
}

void ZEBCircularFIFOBuffer::tellDelegate(const Value& purged) {
  if (const ProtocolRef delegate = delegate_.lock()) {
    delegate->circularFIFOBuffer(*this, purged);
  }
}

void ZEBCircularFIFOBuffer::Iterator::requireUnchanged() const {
  if (buffer_->mutatingInteger_ == mutations_) return;
  throw NSException(NSGenericException, "the buffer was mutated while being enumerated");
}

Class* ZEBCircularFIFOBuffer::runtimeClass() {
  using Self = ZEBCircularFIFOBuffer;
  static Class* const cls = registerClass(
      "ZEBCircularFIFOBuffer", {
                                   classMethod("initWithSize:", &Self::initWithSize),
                                   property("size", &Self::size, &Self::setSize),
                                   property("count", &Self::count),
                                   property("delegate", &Self::delegate, &Self::setDelegate),
                                   method("addObject:", &Self::addObject),
                                   method("removeObject", &Self::removeObject),
                                   method("peekObject", &Self::peekObject),
                                   method("allObjects", &Self::allObjects),
                                   method("removeAllObjects", &Self::removeAllObjects),
                               });
  return cls;
}

}  // namespace zeb
