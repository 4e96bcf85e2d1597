#include <ZEBPlatform/Bundle/NSPropertyListSerialization.h>
#include <ZEBPlatform/Bundle/PropertyListBuilderPrivate.h>
#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/detail/StaticText.h>
#include <ZEBPlatform/Foundation/detail/TreeRebuild.h>

#include <utility>

namespace zeb::detail {

bool PropertyListBuilder::isInDictionary() const noexcept {
  return isInCollection() && open_.back().value.isDictionary();
}

void PropertyListBuilder::openArray() { open(NSMutableArray()); }
void PropertyListBuilder::openDictionary() { open(NSMutableDictionary()); }

void PropertyListBuilder::open(Value collection) {
  if (open_.size() == NSPropertyListMaximumDepth) {
    static constexpr auto fault = numberedText<NSPropertyListMaximumDepth>(
        "it is nested more than ", " levels deep, or in a cycle");
    return fail(fault.c_str());
  }
  if (canTakeValue()) open_.push_back({std::move(collection), nullptr});
}

void PropertyListBuilder::setKey(NSString key) {
  if (hasFault()) return;
  if (!isInDictionary()) return fail("it has a key outside of a dictionary");
  NSString& waiting = open_.back().key;
  if (!waiting.isNil()) return fail("it has a key without a value");
  waiting = std::move(key);
}

void PropertyListBuilder::add(Value value) {
  if (canTakeValue()) store(std::move(value));
}

void PropertyListBuilder::closeCollection() {
  if (hasFault()) return;
  Collection done = std::move(open_.back());
  open_.pop_back();
  if (!done.key.isNil()) return fail("it has a key without a value");
  store(keepsMutable_ ? std::move(done.value) : frozen(std::move(done.value)));
}

PropertyListReading PropertyListBuilder::finish() {
  if (!hasFault() && root_.isNil()) fail("it holds no value");
  if (hasFault()) return {Value(), fault_};
  return {std::move(root_), {}};
}

bool PropertyListBuilder::canTakeValue() noexcept {
  if (hasFault()) return false;
  if (++values_ > maxValues_) {
    fail("it contains too many objects");
  } else if (!isInCollection() && !root_.isNil()) {
    fail("it holds more than one value");
  } else if (isInDictionary() && open_.back().key.isNil()) {
    fail("it has a value without a key");
  }
  return !hasFault();
}

void PropertyListBuilder::store(Value value) {
  if (!isInCollection()) {
    root_ = std::move(value);
  } else if (isInDictionary()) {
    Collection& dictionary = open_.back();
    NSMutableDictionary::from(dictionary.value)
        .setObject(std::move(value), std::exchange(dictionary.key, nullptr));
  } else {
    NSMutableArray::from(open_.back().value).addObject(std::move(value));
  }
}

}  // namespace zeb::detail
