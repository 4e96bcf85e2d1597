#include <ZEBUtilities/Callbacks/ZEBCallbackDispatcher.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "Bench.h"

#if ZEB_BENCH_HAVE_SIGNALS2
#include <boost/signals2/signal.hpp>
#endif

namespace zeb::bench {

namespace {

#if ZEB_BENCH_HAVE_SIGNALS2

constexpr std::size_t observers = 10;

struct Subject final : NSObject {};

const Case callbackFire("callback.fire", [](Report& report) {
  const auto dispatcher = makeRef<ZEBCallbackDispatcher>();
  std::vector<Ref<Subject>> alive;
  std::vector<std::shared_ptr<int>> theirAlive;
  std::uint64_t ourCalls = 0;
  std::uint64_t theirCalls = 0;
  using Signal = boost::signals2::signal<void(const Value&)>;
  Signal signal, tracking;
  for (std::size_t number = 0; number < observers; ++number) {
    alive.push_back(makeRef<Subject>());
    dispatcher->addObserver(alive.back(), [&ourCalls](const Value&) { ++ourCalls; });
    signal.connect([&theirCalls](const Value&) { ++theirCalls; });
    // Tracked like ours: a slot whose owner has been destroyed is not called.
    theirAlive.push_back(std::make_shared<int>());
    tracking.connect(Signal::slot_type([&theirCalls](const Value&) {
                       ++theirCalls;
                     }).track_foreign(theirAlive.back()));
  }
  constexpr std::size_t fires = 100;
  const Value info("info");
  const auto ours = [&] {
    for (std::size_t number = 0; number < fires; ++number) dispatcher->fireWithUserInfo(info);
  };
  const auto theirs = [&](Signal& fired) {
    return [&] {
      for (std::size_t number = 0; number < fires; ++number) fired(info);
    };
  };
  ours();
  theirs(signal)();
  require(ourCalls == theirCalls, "the numbers of calls differ");
  report.add(nanosecondsEach("10 weak observers", "Boost.Signals2, plain slots",
                             measureInTurns(ours, theirs(signal)), fires));
  report.add(nanosecondsEach("10 weak observers", "Boost.Signals2, tracking slots",
                             measureInTurns(ours, theirs(tracking)), fires));
});

#else

const Case callbackFire("callback.fire", [](Report& report) { report.skip("Boost.Signals2"); });

#endif

}  // namespace

}  // namespace zeb::bench
