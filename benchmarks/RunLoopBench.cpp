#include <ZEBPlatform/RunLoop/NSThread.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <thread>
#include <vector>

#include "Bench.h"

#if ZEB_BENCH_HAVE_ASIO
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#endif
#if ZEB_BENCH_HAVE_GLIB
#include <glib.h>
#endif

namespace zeb::bench {

namespace {

constexpr std::size_t posts = 1'000'000;

/// Runs the calling thread's loop until it is stopped. The port keeps it running without timers.
void runLoop() {
  const Ref<NSRunLoop> loop = NSRunLoop::currentRunLoop();
  const Ref<NSPort> port = NSPort::port();
  loop->addPort(port, NSDefaultRunLoopMode);
  loop->run();
  port->invalidate();
}

/// Another thread posts to our loop while this thread runs it.
void postToRunLoop() {
  const Ref<NSRunLoop> loop = NSRunLoop::currentRunLoop();
  std::size_t left = posts;
  std::jthread producer([&] {
    for (std::size_t number = 0; number < posts; ++number) {
      loop->performBlock([&] {
        if (--left == 0) loop->stop();
      });
    }
  });
  runLoop();
}

#if ZEB_BENCH_HAVE_GLIB

/// Does the same as `g_main_context_invoke` from another thread.
void invoke(GMainContext* context, GSourceFunc function, gpointer data) {
  GSource* const source = g_idle_source_new();
  g_source_set_priority(source, G_PRIORITY_DEFAULT);
  g_source_set_callback(source, function, data, nullptr);
  g_source_attach(source, context);
  g_source_unref(source);
}

/// A main loop with a context of its own.
class GLibLoop {
 public:
  ~GLibLoop() {
    g_main_loop_unref(loop);
    g_main_context_unref(context);
  }
  GMainContext* const context = g_main_context_new();
  GMainLoop* const loop = g_main_loop_new(context, FALSE);
};

void postToGLib() {
  struct Countdown {
    GLibLoop loop;
    std::size_t left = posts;
  } countdown;
  const auto step = [](gpointer data) -> gboolean {
    auto& each = *static_cast<Countdown*>(data);
    if (--each.left == 0) g_main_loop_quit(each.loop.loop);
    return G_SOURCE_REMOVE;
  };
  std::jthread producer([&] {
    for (std::size_t number = 0; number < posts; ++number) {
      invoke(countdown.loop.context, step, &countdown);
    }
  });
  g_main_loop_run(countdown.loop.loop);
}

#endif

#if ZEB_BENCH_HAVE_ASIO

void postToAsio() {
  boost::asio::io_context context(1);
  const auto guard = boost::asio::make_work_guard(context);
  std::size_t left = posts;
  std::jthread producer([&] {
    for (std::size_t number = 0; number < posts; ++number) {
      boost::asio::post(context, [&] {
        if (--left == 0) context.stop();
      });
    }
  });
  context.run();
}

#endif

const Case post("runloop.post", [](Report& report) {
#if ZEB_BENCH_HAVE_GLIB
  report.add(nanosecondsEach("performBlock", "GLib idle source",
                             measureInTurns(postToRunLoop, postToGLib), posts));
#else
  report.skip("GLib");
#endif
#if ZEB_BENCH_HAVE_ASIO
  report.add(nanosecondsEach("performBlock", "Boost.Asio io_context",
                             measureInTurns(postToRunLoop, postToAsio), posts));
#else
  report.skip("Boost.Asio");
#endif
});

// Two loops wake each other: each sleeps until the other one has answered.

using Latencies = std::vector<double>;  ///< nanoseconds of one way

class RoundTrips {
 public:
  explicit RoundTrips(Latencies& latencies) : latencies_(latencies) {}

  /// Records the end of a round trip, if one was under way, and begins the next one. False after
  /// the last one.
  bool next() {
    const auto now = std::chrono::steady_clock::now();
    if (isUnderWay_) {
      latencies_.push_back(std::chrono::duration<double, std::nano>(now - start_).count() / 2);
    }
    isUnderWay_ = left_-- > 0;
    start_ = now;
    return isUnderWay_;
  }

 private:
  Latencies& latencies_;
  std::chrono::steady_clock::time_point start_;
  bool isUnderWay_ = false;
  int left_ = 3000;
};

#if ZEB_BENCH_HAVE_GLIB

void playOnRunLoops(Latencies& latencies) {
  RoundTrips trips(latencies);
  const Ref<NSRunLoop> here = NSRunLoop::currentRunLoop();
  const Ref<NSThread> thread = makeRef<NSThread>(runLoop);
  thread->start();
  const Ref<NSRunLoop>& there = thread->runLoop();
  std::function<void()> serve = [&] {
    if (!trips.next()) return here->stop();
    there->performBlock([&] { here->performBlock([&] { serve(); }); });
  };
  here->performBlock([&] { serve(); });
  runLoop();
  performOnThread(thread, [&] { there->stop(); }, true);
}

struct GLibGame {
  explicit GLibGame(Latencies& latencies) : trips(latencies) {}

  static gboolean serve(gpointer data) {
    auto& game = *static_cast<GLibGame*>(data);
    if (game.trips.next()) {
      invoke(game.there.context, answer, data);
    } else {
      g_main_loop_quit(game.here.loop);
    }
    return G_SOURCE_REMOVE;
  }
  static gboolean answer(gpointer data) {
    invoke(static_cast<GLibGame*>(data)->here.context, serve, data);
    return G_SOURCE_REMOVE;
  }
  static gboolean quit(gpointer data) {
    g_main_loop_quit(static_cast<GLibGame*>(data)->there.loop);
    return G_SOURCE_REMOVE;
  }

  RoundTrips trips;
  GLibLoop here, there;
};

void playOnGLib(Latencies& latencies) {
  GLibGame game(latencies);
  std::jthread thread([&] { g_main_loop_run(game.there.loop); });
  invoke(game.here.context, GLibGame::serve, &game);
  g_main_loop_run(game.here.loop);
  invoke(game.there.context, GLibGame::quit, &game);
}

double percentile(Latencies& latencies, std::size_t percent) {
  const auto place =
      latencies.begin() + static_cast<std::ptrdiff_t>(latencies.size() * percent / 100);
  std::nth_element(latencies.begin(), place, latencies.end());
  return *place;
}

const Case wake("runloop.wake", [](Report& report) {
  Latencies ours, theirs, warmUp;
  playOnRunLoops(warmUp);
  playOnGLib(warmUp);
  for (int turn = 0; turn < 15; ++turn) {
    playOnRunLoops(ours);
    playOnGLib(theirs);
  }
  for (const std::size_t percent : {50, 99}) {
    const std::string name = "p" + std::to_string(percent);
    report.add({nanoseconds,
                "performBlock, " + name,
                "GLib idle source, " + name,
                {{"", percentile(ours, percent), percentile(theirs, percent)}}});
  }
});

#else

const Case wake("runloop.wake", [](Report& report) { report.skip("GLib"); });

#endif

}  // namespace

}  // namespace zeb::bench
