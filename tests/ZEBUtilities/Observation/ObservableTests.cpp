#include <Observation/Observable.h>

#include <memory>

#include "Support/HeldQueue.h"
#include "Support/Storm.h"

namespace zeb::test {

using Values = std::vector<int>;

/// A queue to observe on, whose blocks run when the test wants it.
struct ObservableTest : testing::Test {
  const Ref<HeldQueue> held = makeRef<HeldQueue>();
  const Ref<ObserverQueue> queue = makeRef<ObserverQueue>(held);

  static Block<void(const int&)> into(Values& values) {
    return [&values](int value) { values.push_back(value); };
  }
};

TEST_F(ObservableTest, TellsTheCurrentValueFirstAndThenAllOthers) {
  Values early, late;
  auto [input, observable] = Observable<int>::create();
  const auto earlyToken = observable->observe(queue, into(early));
  for (const int value : {1, 1, 2}) input.update(value);
  held->awaitAndRun(3);
  EXPECT_EQ(early, (Values{1, 1, 2})) << "equal values count";
  const auto lateToken = observable->observe(queue, into(late));
  input.update(3);
  held->await(2);
  EXPECT_TRUE(late.empty()) << "never from within observe";
  held->run(2);
  EXPECT_EQ(late, (Values{2, 3}));
}

TEST_F(ObservableTest, PostsOnceForEachObserverQueueForGood) {
  auto [input, observable] = Observable<int>::create();
  const auto sameDispatchQueue = makeRef<ObserverQueue>(held);
  Values values;
  std::vector<Ref<Observer<int>>> tokens;
  for (int i = 0; i < 10; ++i) tokens.push_back(observable->observe(queue, into(values)));
  input.update(1);
  held->awaitAndRun(1);
  EXPECT_EQ(values, Values(10, 1));
  tokens.push_back(observable->observe(sameDispatchQueue, into(values)));
  tokens.push_back(observable->observe(sameDispatchQueue, nullptr));
  input.update(2);
  held->awaitAndRun(4);  // the new observers' first value, and one block for each observer queue
  EXPECT_EQ(values.size(), 22u);
  tokens.clear();
  input.update(3);
  held->awaitAndRun(2);
  EXPECT_EQ(values.size(), 22u) << "entries stay when their observers go";
}

TEST_F(ObservableTest, DroppedTokensAreNotCalledAgain) {
  auto [input, observable] = Observable<int>::create();
  std::vector<Ref<Observer<int>>> tokens(100'000);
  Values values, first;
  for (auto& token : tokens) token = observable->observe(queue, into(values));
  tokens.erase(tokens.begin(), tokens.end() - 3);
  input.update(1);
  held->await(1);
  tokens.erase(tokens.begin());  // while the delivery is on its way
  input.update(2);
  held->awaitAndRun(2);
  EXPECT_EQ(values, (Values{1, 1, 2, 2}));
  (void)observable->observe(queue, into(first));
  held->awaitAndRun(1);
  EXPECT_EQ(first, Values{2}) << "the first value comes all the same";
}

TEST_F(ObservableTest, RemovedObserversAreNotCalledAgainAndHoldNothing) {
  auto [input, observable] = Observable<int>::create(1);
  auto [otherInput, other] = Observable<int>::create();
  Values removed, kept;
  const auto token = observable->observe(queue, into(removed));
  const auto keptToken = observable->observe(queue, into(kept));
  other->remove(token);
  observable->remove(nullptr);
  for (int i = 0; i < 2; ++i) observable->remove(token);
  input.update(2);
  held->awaitAndRun(3);
  EXPECT_EQ(removed, Values{1});
  EXPECT_EQ(kept, (Values{1, 2}));
  observable->remove(keptToken);
  const WeakRef<Observable<int>> weak(observable);
  observable = nullptr;
  // The tokens let it go on its own queue.
  waitUntil([&] { return !weak.isAlive(); }, "the observable has ended");
  input.update(3);
  held->await(0);
  EXPECT_EQ(kept, (Values{1, 2}));
}

TEST_F(ObservableTest, LivesAsLongAsSomebodyHoldsItAndSaysGoodbye) {
  std::atomic<std::intptr_t> ended = 0;
  auto [input, observable] =
      Observable<int>::create(std::nullopt, [&](std::intptr_t address) { ended += address; });
  const std::intptr_t address = observable->hashValue();
  Values values;
  auto token = observable->observe(queue, into(values));
  auto derived = observable->filter(queue, [](int) { return true; });
  EXPECT_TRUE(*observable == *observable && observable->isEqual(*observable) &&
              !observable->isEqual(*derived));
  observable = nullptr;
  input.update(1);
  held->awaitAndRun(1);
  EXPECT_EQ(values, Values{1}) << "a token keeps it";
  input.update(2);
  held->await(1);
  token = nullptr;
  derived = nullptr;
  held->run(1);
  waitUntil([&] { return ended == address; }, "the observable has ended");
  input.update(3);
  EXPECT_EQ(values, Values{1});

  std::thread::id thread;
  auto [secondInput, second] =
      Observable<int>::create(1, [&](std::intptr_t) { thread = std::this_thread::get_id(); });
  std::thread([released = std::move(second), &thread]() mutable {
    released = nullptr;
    EXPECT_EQ(thread, std::this_thread::get_id());
  }).join();
}

TEST_F(ObservableTest, ChainsMayBeAsLongAsTheyLike) {
  const auto serial = makeRef<ObserverQueue>(dispatch_queue_create("chain"));
  std::atomic<bool> ended = false, arrived = false;
  auto [input, last] = Observable<int>::create(0, [&](std::intptr_t) { ended = true; });
  for (int link = 0; link < 5000; ++link) {
    last = last->map(serial, [](int value) { return value + 1; });
    last = last->filter(serial, [](int) { return true; });
  }
  auto token = last->observe(serial, [&](int value) { arrived = value == 5000; });
  // From then on nothing is under way that holds a link.
  waitUntil([&] { return arrived.load(); }, "the value has passed the chain");
  last = nullptr;
  runOnSmallStack([&] { token = nullptr; });
  // The last reference may be a delivery's on another thread.
  waitUntil([&] { return ended.load(); }, "the chain has ended");
}

TEST_F(ObservableTest, UsesTheMainQueueUnlessToldOtherwise) {
  auto [input, observable] = Observable<int>::create(1);
  std::string calls;
  const auto note = [&](char call) { return calls += isMainThread() ? call : '!', true; };
  const auto derived =
      observable->map([&](int) { return note('m'); })->filter([&](bool) { return note('f'); });
  const auto token = derived->observe([&](bool) { note('o'); });
  const auto other = derived->observe(nullptr, [&](bool) { note('o'); });
  runMainQueueUntil([&] { return calls.size() == 4; });
  EXPECT_EQ(calls, "mfoo");
  EXPECT_EQ(ObserverQueue::mainQueue(), ObserverQueue::mainQueue());
  EXPECT_EQ(raisedName([] { (void)makeRef<ObserverQueue>(nullptr); }), NSInvalidArgumentException);
}

/// Has no equality, can't be copied, and all observers and what is filtered see the same one.
TEST_F(ObservableTest, TakesAnyTypeSharesOneValueAndKeepsTheLastAccepted) {
  struct Unique {
    std::unique_ptr<int> number;
  };
  const auto otherHeld = makeRef<HeldQueue>();
  const auto otherQueue = makeRef<ObserverQueue>(otherHeld);
  std::vector<const Unique*> seen;
  const auto see = [&](const Unique& value) { seen.push_back(&value); };
  auto [input, observable] = Observable<Unique>::create();
  const auto filtered =
      observable->filter(queue, [](const Unique& value) { return *value.number > 1; });
  std::vector<Ref<Observer<Unique>>> tokens{observable->observe(otherQueue, see),
                                            filtered->observe(otherQueue, see)};
  for (const int number : {2, 1}) {
    input.update({std::make_unique<int>(number)});
    held->awaitAndRun(1);
  }
  otherHeld->awaitAndRun(3);
  tokens.push_back(filtered->observe(otherQueue, see));
  otherHeld->awaitAndRun(1);
  ASSERT_EQ(seen.size(), 4u);
  const auto shared = std::ranges::max(seen, {}, [](auto* value) { return *value->number; });
  EXPECT_EQ(std::ranges::count(seen, shared), 3) << "also the late observer's value";
}

/// The threads push, observe, remove and drop, also from callbacks; tokens die while they are
/// delivered to.
TEST_F(ObservableTest, StandsAStorm) {
  using Token = Ref<Observer<int>>;
  std::atomic<int> deaths = 0, made = 0, calls = 0, ended = 0;
  std::mutex mutex;
  std::vector<Token> tokens(400);
  const auto exchange = [&](std::size_t index, Token token = nullptr) {
    const std::lock_guard guard(mutex);
    return std::exchange(tokens[index % tokens.size()], std::move(token));
  };
  {
    auto [input, observable] = Observable<int>::create(0, [&](std::intptr_t) { ++ended; });
    const Ref<ObserverQueue> queues[] = {
        makeRef<ObserverQueue>(dispatch_queue_create("one")),
        makeRef<ObserverQueue>(dispatch_queue_create("two", DispatchQueueKind::concurrent))};
    storm(4, [&, pushed = input, source = observable](int, std::mt19937& random) {
      Ref<Observable<int>> derived;
      for (int step = 0; step < 2000; ++step) {
        const std::size_t index = random();
        const auto action = random() % 5;
        if (action == 0) {
          ++made;
          const auto update = [&, pushed, index, probe = makeRef<Probe>(deaths),
                               act = random() % 4](int value) {
            EXPECT_TRUE(probe->isAlive);
            ++calls;
            if (act == 0 && value % 64 == 1) pushed.update(2);
            if (act == 1) exchange(index);
          };
          exchange(index, source->observe(queues[random() % 2], update));
        } else if (action == 1) {
          exchange(index);
        } else if (action == 2) {
          const Token token = exchange(index);
          source->remove(token);
          exchange(index, token);
        } else if (action == 4) {
          pushed.update(step);
        } else if (step % 10 == 0) {
          derived = source->map(queues[0], [](int value) { return value; });
        }
      }
    });
  }
  for (std::size_t i = 0; i < tokens.size(); ++i) exchange(i);
  waitUntil([&] { return ended == 1 && deaths == made; }, "all have ended");
  EXPECT_GT(calls, 1000);
}

}  // namespace zeb::test
