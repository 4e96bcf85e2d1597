#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Dispatch/DispatchSemaphore.h>
#include <ZEBPlatform/Dispatch/DispatchSource.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <future>
#include <latch>
#include <thread>
#include <utility>
#include <vector>

#include "Bench.h"

#if ZEB_BENCH_HAVE_ASIO
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/strand.hpp>
#include <boost/asio/thread_pool.hpp>
#endif

namespace zeb::bench {

namespace {

constexpr std::size_t posts = 200'000;

/// Posts `posts` blocks in total, from `producers` threads at the same time.
void postFrom(int producers, const std::function<void(std::size_t)>& postMany) {
  std::vector<std::jthread> threads;
  for (int other = 1; other < producers; ++other) {
    threads.emplace_back([&] { postMany(posts / static_cast<std::size_t>(producers)); });
  }
  postMany(posts / static_cast<std::size_t>(producers));
}

#if ZEB_BENCH_HAVE_ASIO

namespace asio = boost::asio;

asio::thread_pool& asioPool() {
  static auto* pool = new asio::thread_pool(std::thread::hardware_concurrency());
  return *pool;
}

const Case serialAsync("dispatch.serial.async", [](Report& report) {
  for (const int producers : {1, 2}) {
    const dispatch_queue_t queue = dispatch_queue_create("bench");
    std::uint64_t ourSum = 0;
    const auto ours = [&] {
      postFrom(producers, [&](std::size_t count) {
        for (std::size_t number = 0; number < count; ++number) {
          dispatch_async(queue, [&ourSum, number] { ourSum += number; });
        }
      });
      dispatch_sync(queue, [] {});
    };
    auto strand = asio::make_strand(asioPool());
    std::uint64_t theirSum = 0;
    const auto theirs = [&] {
      postFrom(producers, [&](std::size_t count) {
        for (std::size_t number = 0; number < count; ++number) {
          asio::post(strand, [&theirSum, number] { theirSum += number; });
        }
      });
      std::latch done(1);
      asio::post(strand, [&] { done.count_down(); });
      done.wait();
    };
    ours();
    theirs();
    require(ourSum == theirSum, "the sums differ");
    report.add(
        nanosecondsEach(producers == 1 ? "serial queue, 1 producer" : "serial queue, 2 producers",
                        "Boost.Asio strand", measureInTurns(ours, theirs), posts));
  }
});

const Case concurrentAsync("dispatch.concurrent.async", [](Report& report) {
  const dispatch_queue_t global = dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT);
  const dispatch_queue_t own = dispatch_queue_create("bench", DispatchQueueKind::concurrent);
  const auto on = [](const dispatch_queue_t& queue) {
    return [&queue] {
      std::latch done(posts);
      for (std::size_t number = 0; number < posts; ++number) {
        dispatch_async(queue, [&done] { done.count_down(); });
      }
      done.wait();
    };
  };
  const auto theirs = [] {
    std::latch done(posts);
    for (std::size_t number = 0; number < posts; ++number) {
      asio::post(asioPool(), [&done] { done.count_down(); });
    }
    done.wait();
  };
  report.add(nanosecondsEach("global queue", "Boost.Asio thread_pool",
                             measureInTurns(on(global), theirs), posts));
  report.add(nanosecondsEach("own concurrent queue", "Boost.Asio thread_pool",
                             measureInTurns(on(own), theirs), posts));
});

/// Many timers with a handler and a deadline of their own in an hour; all are then cancelled and
/// destroyed. The peer calls the handlers of cancelled timers with an error, in `run`; ours are
/// released without a call. Any thread may use our timers, but only one at a time a peer's one.
const Case timerCreateCancel("timer.create_cancel", [](Report& report) {
  constexpr std::size_t timers = 100'000;
  const dispatch_queue_t queue = dispatch_queue_create("bench");
  const auto ours = [&] {
    std::vector<dispatch_source_t> sources;
    sources.reserve(timers);
    for (std::size_t number = 0; number < timers; ++number) {
      dispatch_source_t& source = sources.emplace_back(dispatch_source_create_timer(queue));
      const auto delay = static_cast<std::int64_t>(3600 * NSEC_PER_SEC + number * 7919 % 1000'003);
      dispatch_source_set_timer(source, dispatch_time(DISPATCH_TIME_NOW, delay),
                                DISPATCH_TIME_FOREVER, 0);
      dispatch_source_set_event_handler(source, [number] { consume(number); });
      dispatch_resume(source);
    }
    for (const dispatch_source_t& source : sources) dispatch_source_cancel(source);
  };
  const auto theirs = [&] {
    asio::io_context context;
    std::vector<asio::steady_timer> sources;
    sources.reserve(timers);
    for (std::size_t number = 0; number < timers; ++number) {
      asio::steady_timer& source = sources.emplace_back(context);
      source.expires_after(std::chrono::hours(1) +
                           std::chrono::nanoseconds(number * 7919 % 1000'003));
      source.async_wait([number](boost::system::error_code) { consume(number); });
    }
    for (asio::steady_timer& source : sources) source.cancel();
    context.run();
  };
  report.add(nanosecondsEach("dispatch timer source", "Boost.Asio steady_timer",
                             measureInTurns(ours, theirs), timers));
});

/// No other thread uses the queue: both sides run the block on the calling thread.
const Case sync("dispatch.sync", [](Report& report) {
  constexpr std::size_t calls = 1000;
  const dispatch_queue_t queue = dispatch_queue_create("bench");
  asio::io_context context;
  auto strand = asio::make_strand(context);
  std::uint64_t ourSum = 0;
  std::uint64_t theirSum = 0;
  const auto ours = [&] {
    for (std::size_t number = 0; number < calls; ++number) {
      dispatch_sync(queue, [&ourSum, number] { ourSum += number; });
    }
  };
  const auto theirs = [&] {
    for (std::size_t number = 0; number < calls; ++number) {
      asio::post(strand, [&theirSum, number] { theirSum += number; });
      context.poll();
      context.restart();
    }
  };
  ours();
  theirs();
  require(ourSum == theirSum, "the sums differ");
  report.add(nanosecondsEach("dispatch_sync, uncontended", "Boost.Asio strand, run by the caller",
                             measureInTurns(ours, theirs), calls));
});

/// Two threads post to one queue, and each waits for each of its blocks.
const Case contendedSync("dispatch.sync.contended", [](Report& report) {
  constexpr std::size_t calls = 5000;  // of each thread
  const auto fromTwoThreads = [](const std::function<void()>& callMany) {
    const std::jthread other(callMany);
    callMany();
  };
  const dispatch_queue_t queue = dispatch_queue_create("bench");
  std::uint64_t ourSum = 0;
  const auto ours = [&] {
    fromTwoThreads([&] {
      for (std::size_t number = 0; number < calls; ++number) {
        dispatch_sync(queue, [&ourSum, number] { ourSum += number; });
      }
    });
  };
  auto strand = asio::make_strand(asioPool());
  std::uint64_t theirSum = 0;
  const auto theirs = [&] {
    fromTwoThreads([&] {
      for (std::size_t number = 0; number < calls; ++number) {
        std::promise<void> promise;
        const std::future<void> done = promise.get_future();
        asio::post(strand, [&theirSum, number, promise = std::move(promise)]() mutable {
          theirSum += number;
          promise.set_value();
        });
        done.wait();
      }
    });
  };
  ours();
  theirs();
  require(ourSum == theirSum, "the sums differ");
  report.add(nanosecondsEach("dispatch_sync, 2 threads", "Boost.Asio strand with a std::promise",
                             measureInTurns(ours, theirs), 2 * calls));
});

#else

const Case asioCases("dispatch.async", [](Report& report) { report.skip("Boost.Asio"); });

#endif

}  // namespace

}  // namespace zeb::bench
