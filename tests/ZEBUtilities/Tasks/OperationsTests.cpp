#include <ZEBPlatform/Operations.h>
#include <ZEBPlatform/Runtime.h>
#include <ZEBUtilities/Tasks.h>

#include "Support/Support.h"
#include "Support/Track.h"

namespace zeb::test {

using Graph = OperationDependencyGraph;
using Operations = Graph::Operations;

struct Named : NSOperation {
  explicit Named(const char* name) { setName(name); }
};

/// Equal to all others.
struct Equal : Named {
  using Named::Named;
  bool isEqual(const NSObject& other) const noexcept override {
    return dynamic_cast<const Equal*>(&other);
  }
  std::size_t hash() const noexcept override { return 1; }
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
  const Operations all{makeRef<Named>("a"), makeRef<Named>("b"), makeRef<Named>("c"),
                       makeRef<Named>("d"), makeRef<Named>("e")};
  const auto &a = all[0], &b = all[1], &c = all[2], &d = all[3], &e = all[4];
  const auto established = [&](const Graph& graph) {
    EXPECT_EQ(dependencies(all), "") << "no dependencies before establishDependencies";
    graph.establishDependencies();
    const std::string text = dependencies(all);
    for (const auto& each : all) {
      for (const auto& other : each->dependencies()) each->removeDependency(other);
    }
    return text;
  };
  EXPECT_EQ(established(dependingOn(e, Operations{c, d}).dependingOn(Operations{a, b})),
            "c<ab d<ab e<cd ");
  EXPECT_EQ(established(dependingOn(c, nullptr, b).dependingOn(nullptr, a, nullptr)), "b<a c<b ");
  EXPECT_EQ(established(dependingOn(nullptr, b).dependingOn()), "");
  EXPECT_EQ(established(Graph({a}, {Graph({b, c}, {Graph(d)}), Graph(e), Graph({c, b}, {}),
                                    Graph({b, c}, {Graph(e)})})),
            "b<a c<a d<bc e<bca ");
}

TEST(OperationDependencyGraph, CountsEqualListsOnce) {
  const Ref<NSOperation> a = makeRef<Named>("a"), same = makeRef<Equal>("x"),
                         asSame = makeRef<Equal>("y"), d = makeRef<Named>("d"),
                         e = makeRef<Named>("e");
  Graph({a}, {Graph({same, nullptr}, {Graph(d)}), Graph({asSame, nullptr}, {Graph(e)})})
      .establishDependencies();
  EXPECT_EQ(dependencies({same, asSame, e}), "x<a e<x ") << "the first one stands for both";
}

TEST(OperationDependencyGraph, CanBeAnyLengthAndWidth) {
  runOnSmallStack([] {
    Operations all{makeRef<Named>("last")};
    Graph graph(all[0]);
    for (int i = 0; i < 50'000; ++i) {
      all.push_back(makeRef<Named>("earlier"));
      graph = graph.dependingOn(all.back());
    }
    graph.establishDependencies();
    EXPECT_EQ(all[0]->dependencies(), Operations{all[1]});
  });
  const Ref<NSOperation> first = makeRef<Named>("first");
  Graph::Graphs dependents;
  for (int i = 0; i < 100'000; ++i) dependents.emplace_back(makeRef<Named>("later"));
  Graph({first}, dependents).establishDependencies();
  EXPECT_EQ(dependents.back().operations()[0]->dependencies(), Operations{first});
}

TEST(ZEBSafeOperation, ReleasesItsCompletionBlock) {
  EXPECT_FALSE(zeb_isCompletionBlockNotNilledBugPresent());
  int completions = 0;
  const auto check = [&](auto operation) {
    const auto complete = [&, operation] { ++completions; };
    operation->setCompletionBlock(complete);
    operation->zeb_clearCompletionBlock();
    EXPECT_FALSE(operation->completionBlock());
    operation->setCompletionBlock(complete);
    operation->start();
    EXPECT_FALSE(operation->completionBlock()) << "which referred to its operation";
  };
  check(makeRef<ZEBSafeOperation>());
  check(ZEBSafeBlockOperation::blockOperationWithBlock([] {}));
  check(makeRef<ZEBSafeInvocationOperation>([] { return Value(3); }));
  EXPECT_EQ(completions, 3);
}

TEST(NSInvocationOperation, SendsAMessage) {
  using Operation = NSInvocationOperation;
  auto track = Track::trackWithTitle("old");
  const WeakRef<Track> weak(track);
  const auto set = makeRef<Operation>(track, "setTitle:"_sel, "new");
  const auto get = makeRef<Operation>(track, "title"_sel);
  track = nullptr;
  set->start();
  EXPECT_TRUE(set->result().isNil());
  get->start();
  EXPECT_EQ(get->result(), "new");
  EXPECT_FALSE(weak.lock()) << "the target is kept until the last one has run";
  EXPECT_EQ(raisedName([&] { return makeRef<Operation>(nullptr, SEL()); }),
            NSInvalidArgumentException);
  for (const auto& empty : {makeRef<Operation>(nullptr, "title"_sel),
                            makeRef<Operation>(Ref<NSOperation>(), &NSOperation::cancel)}) {
    empty->start();
    EXPECT_TRUE(empty->isFinished() && empty->result().isNil());
  }
}

TEST(ZEBBackgroundTaskHandle, NotifiesItsDelegateWhenDestroyed) {
  struct Recorder : NSObject, ZEBBackgroundTaskHandleDelegate {
    void backgroundTaskHandleWillBeDeallocated(const NSString& identifier) override {
      EXPECT_EQ(thread, std::this_thread::get_id());
      ended.push_back(identifier);
    }
    std::vector<NSString> ended;
    std::thread::id thread;
  };
  auto recorder = makeRef<Recorder>();
  auto handle = makeRef<ZEBBackgroundTaskHandle>("sync-1", "Sync", recorder);
  EXPECT_EQ(handle->name(), "Sync");
  std::thread([&] {
    recorder->thread = std::this_thread::get_id();
    handle = nullptr;
  }).join();
  EXPECT_EQ(recorder->ended, std::vector{"sync-1"_ns});

  handle = makeRef<ZEBBackgroundTaskHandle>("sync-2", nullptr, nullptr);
  handle->setDelegate(recorder);
  recorder = nullptr;
  EXPECT_FALSE(handle->delegate()) << "held weakly";
}

}  // namespace zeb::test
