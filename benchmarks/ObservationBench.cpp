#include <Observation/Observable.h>
#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Dispatch/DispatchSemaphore.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "Bench.h"
#include "ObservationPeers.h"

namespace zeb::bench {

#if !ZEB_BENCH_HAVE_QT
std::unique_ptr<QtObservation> makeQtObservation(std::size_t) { return nullptr; }
#endif

namespace {

constexpr std::size_t observers = 10;

const Case observableUpdate("observable.update", [](Report& report) {
  const auto qt = makeQtObservation(observers);
  if (!qt) return report.skip("Qt");
  constexpr std::size_t updates = 1000;
  const auto queue = makeRef<ObserverQueue>(dispatch_queue_create("bench"));
  const auto [input, observable] = Observable<std::int64_t>::create();
  const dispatch_semaphore_t done = dispatch_semaphore_create(0);
  std::size_t called = 0;
  std::vector<Ref<Observer<std::int64_t>>> tokens;
  for (std::size_t number = 0; number < observers; ++number) {
    tokens.push_back(observable->observe(queue, [&](std::int64_t) {
      if (++called == observers * updates) dispatch_semaphore_signal(done);
    }));
  }
  const auto ours = [&, &input = input] {
    dispatch_sync(queue->queue(), [&] { called = 0; });
    for (std::size_t number = 0; number < updates; ++number) {
      input.update(static_cast<std::int64_t>(number));
    }
    dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER);
  };
  report.add(nanosecondsEach("10 observers on one queue", "Qt queued signal, 10 receivers",
                             measureInTurns(ours, [&] { qt->emitQueued(updates); }), updates));
});

}  // namespace

}  // namespace zeb::bench
