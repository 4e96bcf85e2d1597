#include <ZEBUtilities/Collections/ZEBCircularFIFOBuffer.h>

#include <deque>

#include "Support/Support.h"

namespace zeb::test {

static_assert(std::ranges::forward_range<ZEBCircularFIFOBuffer> &&
              !std::ranges::sized_range<ZEBCircularFIFOBuffer>);

struct Recorder : NSObject, ZEBCircularFIFOBufferDelegate {
  void circularFIFOBuffer(ZEBCircularFIFOBuffer& buffer, const Value& purgedObject) override {
    EXPECT_FALSE(buffer.allObjects().containsObject(purgedObject));
    purged.push_back(purgedObject);
  }
  std::vector<Value> purged;
};

/// Random additions, removals and resizings, all of which a plain queue does as well.
TEST(ZEBCircularFIFOBuffer, BehavesAsAQueueThatDropsItsOldest) {
  std::mt19937 random(1);
  std::deque<Value> model;
  std::vector<Value> purged;
  std::size_t size = 3;
  const auto recorder = makeRef<Recorder>();
  const auto buffer = ZEBCircularFIFOBuffer::initWithSize(size);
  buffer->setDelegate(recorder);
  for (int step = 0; step < 5000; ++step) {
    const auto choice = random() % 100;
    if (choice < 60) {
      buffer->addObject(step);
      model.push_back(step);
    } else if (choice < 92) {
      EXPECT_EQ(buffer->removeObject(), model.empty() ? Value() : model.front());
      if (!model.empty()) model.pop_front();
    } else if (choice < 99) {
      buffer->setSize(size = 1 + random() % 6);
    } else {
      buffer->removeAllObjects();
      model.clear();
    }
    for (; model.size() > size; model.pop_front()) purged.push_back(model.front());
    ASSERT_EQ(buffer->peekObject(), model.empty() ? Value() : model.front());
    ASSERT_EQ(recorder->purged, purged);
    ASSERT_TRUE(std::equal(buffer->begin(), buffer->end(), model.begin(), model.end())) << step;
    ASSERT_TRUE(buffer->allObjects().count() == model.size() && buffer->size() == size);
  }
}

TEST(ZEBCircularFIFOBuffer, RefusesWhatItCannotHoldAndLetsGo) {
  EXPECT_FALSE(ZEBCircularFIFOBuffer::initWithSize(0));
  const auto buffer = ZEBCircularFIFOBuffer::initWithSize(1);
  EXPECT_EQ(raisedName([&] { buffer->setSize(0); }), NSInvalidArgumentException);
  EXPECT_EQ(raisedText([&] { buffer->addObject(nullptr); }),
            "NSInvalidArgumentException: nil object is not allowed");
  buffer->addObject("only");
  buffer->addObject(*buffer->begin());  // a reference into the buffer
  EXPECT_EQ(buffer->peekObject(), "only");
  buffer->setDelegate(makeRef<Recorder>());
  EXPECT_FALSE(buffer->delegate()) << "held weakly";
  std::atomic<int> deaths = 0;
  for (int i = 0; i < 3; ++i) buffer->addObject(makeRef<Probe>(deaths));
  buffer->removeObject();
  EXPECT_EQ(deaths, 3) << "dropped and removed objects die";
}

TEST(ZEBCircularFIFOBuffer, ChangesEndAnEnumeration) {
  for (const int change : {0, 1, 2, 3}) {
    const auto buffer = ZEBCircularFIFOBuffer::initWithSize(1);
    buffer->addObject("first and last");
    auto next = buffer->begin();
    if (change == 0) buffer->addObject(4);
    if (change == 1) buffer->removeObject();
    if (change == 2) buffer->removeAllObjects();
    if (change == 3) buffer->setSize(9);
    EXPECT_EQ(raisedName([&] { ++next; }), NSGenericException);
  }
}

}  // namespace zeb::test
