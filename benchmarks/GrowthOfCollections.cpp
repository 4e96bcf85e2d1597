#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSSet.h>

#include "Growth.h"

namespace zeb::bench {

namespace {

/// A collection, and the texts that are inserted or removed.
template <class Collection>
struct Texts {
  explicit Texts(std::size_t count) {
    for (std::size_t number = 0; number < count; ++number) {
      all.emplace_back("text " + std::to_string(number));
    }
  }

  std::vector<NSString> all;
  Collection collection;
};

using Dictionary = Texts<NSMutableDictionary>;
using Set = Texts<NSMutableSet>;

void insert(Dictionary& input) {
  for (const NSString& key : input.all) input.collection.setObject(Value(1), key);
}
void insert(Set& input) {
  for (const NSString& member : input.all) input.collection.addObject(member);
}
void remove(Dictionary& input) {
  for (const NSString& key : input.all) input.collection.removeObjectForKey(key);
}
void remove(Set& input) {
  for (const NSString& member : input.all) input.collection.removeObject(member);
}

/// The collection contains all texts.
template <class Input>
Input makeFilled(std::size_t count) {
  Input input(count);
  insert(input);
  input.all = fromBothEnds(input.all);
  return input;
}

template <class Input>
void insertAll(Input& input) {
  insert(input);
}
template <class Input>
void removeAll(Input& input) {
  remove(input);
}

constexpr GrowthPlot plot = GrowthPlot::collections;

const GrowthCase dictionaryInsertion(plot, "dict.insert", makeInput<Dictionary>,
                                     insertAll<Dictionary>);
const GrowthCase dictionaryRemoval(plot, "dict.remove", makeFilled<Dictionary>,
                                   removeAll<Dictionary>);
const GrowthCase setInsertion(plot, "set.insert", makeInput<Set>, insertAll<Set>);
const GrowthCase setRemoval(plot, "set.remove", makeFilled<Set>, removeAll<Set>);

}  // namespace

}  // namespace zeb::bench
