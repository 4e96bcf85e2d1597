#include <ZEBPlatform/Memory/WeakRef.h>
#include <ZEBPlatform/Operations/NSOperationQueue.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBPlatform/Runtime/Send.h>
#include <ZEBUtilities/Tasks/OperationDependencyGraph.h>
#include <ZEBUtilities/Tasks/ZEBBackgroundQueue.h>
#include <ZEBUtilities/Tasks/ZEBBackgroundTaskHandle.h>
#include <ZEBUtilities/Tasks/ZEBSafeOperation.h>
#include <gtest/gtest.h>

#include <thread>

#include "Support/LogRecorder.h"
#include "Support/Support.h"

namespace zeb {
namespace {

using Graph = OperationDependencyGraph;
using Operations = Graph::Operations;

struct Named : NSOperation {
  explicit Named(const char* name) { setName(name); }
};

/// Equal to others of its name.
struct Equal : Named {
  using Named::Named;
  bool isEqual(const NSObject& other) const noexcept override {
    const auto* operation = dynamic_cast<const Equal*>(&other);
    return operation && operation->name() == name();
  }
  std::size_t hash() const noexcept override { return name().hash(); }
};

/// "name<dependency,dependency" for each operation that has dependencies.
std::string dependencies(const Operations& operations) {
  std::string text;
  for (const auto& operation : operations) {
    if (operation->dependencies().empty()) continue;
    text += operation->name().utf8() + "<";
    for (const auto& other : operation->dependencies()) text += other->name().utf8();
    text += ' ';
  }
  return text;
}

TEST(OperationDependencyGraph, AddsTheDeclaredDependencies) {
  const auto check = [](const auto& declare) {
    Operations all;
    for (const char* name : {"a", "b", "c", "d", "e"}) all.push_back(makeRef<Named>(name));
    const Graph graph = declare(all[0], all[1], all[2], all[3], all[4]);
    EXPECT_EQ(dependencies(all), "") << "no dependencies before establishDependencies";
    graph.establishDependencies();
    return dependencies(all);
  };
  using R = const Ref<NSOperation>&;
  EXPECT_EQ(check([](R a, R, R, R, R) { return Graph(a); }), "");
  EXPECT_EQ(check([](R a, R b, R c, R, R) { return dependingOn(c, b).dependingOn(a); }),
            "b<a c<b ");
  EXPECT_EQ(check([](R a, R b, R c, R, R) { return dependingOn(c, a, b); }), "c<ab ");
  EXPECT_EQ(check([](R a, R b, R c, R d, R e) {
              return dependingOn(e, Operations{c, d}).dependingOn(Operations{a, b});
            }),
            "c<ab d<ab e<cd ");
  EXPECT_EQ(check([](R a, R b, R c, R, R) {
              return dependingOn(c, nullptr, b).dependingOn(nullptr, a, nullptr);
            }),
            "b<a c<b ");
  EXPECT_EQ(check([](R, R b, R, R, R) { return dependingOn(nullptr, b).dependingOn(); }), "");
  EXPECT_EQ(check([](R a, R b, R c, R d, R e) {
              return Graph({a}, {Graph({b, c}, {Graph(d)}), Graph(e), Graph({c, b}, {}),
                                 Graph({b, c}, {Graph(e)})});
            }),
            "b<a c<a d<bc e<bca ");
}

TEST(OperationDependencyGraph, CountsEqualListsOnce) {
  const Ref<NSOperation> a = makeRef<Named>("a"), same = makeRef<Equal>("x"),
                         asSame = makeRef<Equal>("x"), d = makeRef<Named>("d"),
                         e = makeRef<Named>("e");
  Graph({a}, {Graph({same, nullptr}, {Graph(d)}), Graph({asSame, nullptr}, {Graph(e)})})
      .establishDependencies();
  EXPECT_EQ(same->dependencies(), Operations{a});
  EXPECT_EQ(asSame->dependencies(), Operations{}) << "the first one stands for both";
  EXPECT_EQ(e->dependencies(), Operations{same});
}

TEST(OperationDependencyGraph, CanBeAnyLength) {
  test::runOnSmallStack([] {
    Operations all{makeRef<Named>("last")};
    Graph graph(all[0]);
    for (int i = 0; i < 50'000; ++i) {
      all.push_back(makeRef<Named>("earlier"));
      graph = graph.dependingOn(all.back());
    }
    EXPECT_EQ(graph.operations(), Operations{all.back()});
    EXPECT_EQ(graph.dependentOperations()[0].operations(), Operations{all.end()[-2]});
    graph.establishDependencies();
    EXPECT_EQ(all[0]->dependencies(), Operations{all[1]});
    EXPECT_TRUE(all.back()->dependencies().empty());
  });
}

TEST(OperationDependencyGraph, CanBeAnyWidth) {
  const Ref<NSOperation> first = makeRef<Named>("first");
  Graph::Graphs dependents;
  for (int i = 0; i < 100'000; ++i) dependents.emplace_back(makeRef<Named>("later"));
  Graph({first}, dependents).establishDependencies();
  EXPECT_EQ(dependents.back().operations()[0]->dependencies(), Operations{first});
}

TEST(ZEBSafeOperation, ReleasesItsCompletionBlock) {
  EXPECT_FALSE(zeb_isCompletionBlockNotNilledBugPresent());
  const auto plain = makeRef<ZEBSafeOperation>();
  const auto block = ZEBSafeBlockOperation::blockOperationWithBlock([] {});
  const auto invocation = makeRef<ZEBSafeInvocationOperation>([] { return Value(3); });
  int completions = 0;
  const auto check = [&](auto operation) {
    std::atomic<int> deaths = 0;
    const auto complete = [&, operation, probe = makeRef<test::Probe>(deaths)] { ++completions; };
    operation->setCompletionBlock(complete);
    operation->zeb_clearCompletionBlock();
    EXPECT_FALSE(operation->completionBlock());
    operation->setCompletionBlock(std::move(complete));
    operation->start();
    EXPECT_FALSE(operation->completionBlock()) << "which referred to its operation";
  };
  check(plain);
  check(block);
  check(invocation);
  EXPECT_EQ(completions, 3);
  EXPECT_EQ(invocation->result(), 3);
  EXPECT_EQ(block->className(), "ZEBSafeBlockOperation");
}

struct Receiver : NSObject {
  static Class* runtimeClass() {
    static Class* const cls = registerClass(
        "Receiver",
        {
            method("add:", [](Receiver& self, int summand) { return self.sum += summand; }),
            method("clear", [](Receiver& self) { self.sum = 0; }),
            method("raise", [](Receiver&) -> Value { raiseRange(3, 2); }),
        });
    return cls;
  }
  Class* classObject() const override { return runtimeClass(); }
  int sum = 40;
};

template <class Operation>
void checkMessages() {
  auto receiver = makeRef<Receiver>();
  const WeakRef<Receiver> weak(receiver);
  const auto add = makeRef<Operation>(receiver, "add:"_sel, 2);
  const auto clear = makeRef<Operation>(receiver, "clear"_sel);
  const auto raise = makeRef<Operation>(receiver, "raise"_sel, 2);
  receiver = nullptr;
  add->start();
  EXPECT_EQ(add->result(), 42);
  clear->start();
  EXPECT_TRUE(clear->result().isNil() && weak.lock()->sum == 0);
  raise->start();
  EXPECT_EQ(test::raisedName([&] { raise->result(); }), NSRangeException);
  EXPECT_FALSE(weak.lock()) << "the target is kept until the last one has run";

  EXPECT_EQ(test::raisedName([&] { return makeRef<Operation>(nullptr, SEL()); }),
            NSInvalidArgumentException);
  struct Plain : NSObject {
    void call() {}
  };
  for (const auto& empty :
       {makeRef<Operation>(nullptr, "add:"_sel), makeRef<Operation>(Ref<Plain>(), &Plain::call)}) {
    empty->start();
    EXPECT_TRUE(empty->isFinished() && empty->result().isNil());
  }
}

TEST(InvocationOperation, SendsAMessage) {
  test::LogRecorder log;
  checkMessages<NSInvocationOperation>();
  checkMessages<ZEBSafeInvocationOperation>();
}

TEST(ZEBBackgroundQueue, IsOneSerialQueue) {
  const auto queue = ZEBBackgroundQueue::sharedBackgroundQueue();
  EXPECT_EQ(queue, ZEBBackgroundQueue::sharedBackgroundQueue());
  EXPECT_STREQ(dispatch_queue_get_label(queue), "org.zebutilities.queue.background");
  std::vector<int> order;
  for (int i = 0; i < 100; ++i) dispatch_async(queue, [&, i] { order.push_back(i); });
  dispatch_sync(queue, [] {});
  EXPECT_TRUE(order.size() == 100 && std::ranges::is_sorted(order));
}

static_assert(!std::is_default_constructible_v<ZEBBackgroundTaskHandle>);

TEST(ZEBBackgroundTaskHandle, NotifiesItsDelegateWhenDestroyed) {
  struct Recorder : NSObject, ZEBBackgroundTaskHandleDelegate {
    void backgroundTaskHandleWillBeDeallocated(const NSString& identifier) override {
      ended.push_back(identifier);
      thread = std::this_thread::get_id();
    }
    std::vector<NSString> ended;
    std::thread::id thread;
  };
  auto recorder = makeRef<Recorder>();
  auto handle = makeRef<ZEBBackgroundTaskHandle>("sync-1", "Sync", recorder);
  EXPECT_EQ(handle->identifier(), "sync-1");
  EXPECT_EQ(handle->name(), "Sync");
  std::thread([&] {
    handle = nullptr;
    EXPECT_EQ(recorder->thread, std::this_thread::get_id());
  }).join();
  EXPECT_EQ(recorder->ended, std::vector{"sync-1"_ns});

  handle = makeRef<ZEBBackgroundTaskHandle>("sync-2", nullptr, nullptr);
  handle->setDelegate(recorder);
  EXPECT_EQ(handle->delegate(), recorder);
  recorder = nullptr;
  EXPECT_FALSE(handle->delegate()) << "held weakly";
  handle = nullptr;
}

}  // namespace
}  // namespace zeb
