#include <RunLoop/NSRunLoop.h>
#include <RunLoop/NSThread.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <latch>
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

constexpr std::size_t posts = 100'000;

/// A thread's event loop, ours or a peer's. `post` is called from elsewhere.
struct Loop {
  std::function<void(std::function<void()>)> post;
  std::function<void()> run;
  std::function<void()> stop;  ///< from inside
};

#if ZEB_BENCH_HAVE_GLIB

void attachToGLib(GMainContext* context, GSourceFunc function, void* data, GDestroyNotify destroy) {
  GSource* source = g_idle_source_new();
  g_source_set_priority(source, G_PRIORITY_DEFAULT);
  g_source_set_callback(source, function, data, destroy);
  g_source_attach(source, context);
  g_source_unref(source);
}

#endif

/// `posts` blocks from another thread, until all have run.
template <class Post>
void postFromOtherThread(const Post& postAll, const std::function<void()>& run) {
  std::jthread producer([&] { postAll(); });
  run();
}

const Case post("runloop.post", [](Report& report) {
  const Ref<NSRunLoop> loop = NSRunLoop::currentRunLoop();
  std::uint64_t ourSum = 0;
  const auto keepAlive = NSPort::port();
  loop->addPort(keepAlive, NSDefaultRunLoopMode);
  const auto ours = [&] {
    postFromOtherThread(
        [&] {
          for (std::size_t number = 0; number < posts; ++number) {
            loop->performBlock([&ourSum, number] { ourSum += number; });
          }
          loop->performBlock([&] { loop->stop(); });
        },
        [&] { loop->run(); });
  };

#if ZEB_BENCH_HAVE_GLIB
  GMainContext* context = g_main_context_new();
  GMainLoop* glib = g_main_loop_new(context, FALSE);
  static std::uint64_t glibSum;
  glibSum = 0;
  const auto glibs = [&] {
    postFromOtherThread(
        [&] {
          for (std::size_t number = 0; number < posts; ++number) {
            attachToGLib(
                context,
                [](gpointer data) -> gboolean {
                  glibSum += GPOINTER_TO_SIZE(data);
                  return G_SOURCE_REMOVE;
                },
                GSIZE_TO_POINTER(number), nullptr);
          }
          attachToGLib(
              context,
              [](gpointer data) -> gboolean {
                g_main_loop_quit(static_cast<GMainLoop*>(data));
                return G_SOURCE_REMOVE;
              },
              glib, nullptr);
        },
        [&] { g_main_loop_run(glib); });
  };
  ours();
  glibs();
  require(ourSum == glibSum, "the sums differ");
  report.add(nanosecondsEach("performBlock", "GLib, an idle source each",
                             measureInTurns(ours, glibs), posts));
  g_main_loop_unref(glib);
  g_main_context_unref(context);
#else
  report.skip("GLib");
#endif

#if ZEB_BENCH_HAVE_ASIO
  boost::asio::io_context asio(1);
  std::uint64_t asioSum = 0;
  const auto asios = [&] {
    const auto work = boost::asio::make_work_guard(asio);
    asio.restart();
    postFromOtherThread(
        [&] {
          for (std::size_t number = 0; number < posts; ++number) {
            boost::asio::post(asio, [&asioSum, number] { asioSum += number; });
          }
          boost::asio::post(asio, [&asio] { asio.stop(); });
        },
        [&] { asio.run(); });
  };
  report.add(
      nanosecondsEach("performBlock", "Boost.Asio io_context", measureInTurns(ours, asios), posts));
#else
  report.skip("Boost.Asio");
#endif
  loop->removePort(keepAlive, NSDefaultRunLoopMode);
});

#if ZEB_BENCH_HAVE_GLIB

/// Nanoseconds of round trips between two loops that sleep in between: one posts to the other, which posts
/// back.
std::vector<double> roundTrips(const Loop& here, const Loop& there) {
  constexpr int rounds = 5000;
  using Clock = std::chrono::steady_clock;
  std::vector<double> times;
  std::latch isOver(1);
  std::jthread other([&] {
    there.run();
    isOver.count_down();
  });
  Clock::time_point start;
  std::function<void()> begin = [&] {
    start = Clock::now();
    there.post([&] {
      here.post([&] {
        times.push_back(std::chrono::duration<double, std::nano>(Clock::now() - start).count());
        if (times.size() < rounds) {
          begin();
        } else {
          there.post([&] { there.stop(); });
          here.stop();
        }
      });
    });
  };
  here.post(begin);
  here.run();
  isOver.wait();
  return times;
}

double percentile(std::vector<double> values, double part) {
  const auto position = static_cast<std::ptrdiff_t>(part * static_cast<double>(values.size() - 1));
  std::nth_element(values.begin(), values.begin() + position, values.end());
  return values[static_cast<std::size_t>(position)];
}

struct OurLoop {
  Ref<NSRunLoop> loop;
  Loop ends() const {
    return {[this](std::function<void()> work) { loop->performBlock(std::move(work)); },
            [this] { loop->run(); }, [this] { loop->stop(); }};
  }
};

struct GLibLoop {
  GMainContext* context = g_main_context_new();
  GMainLoop* loop = g_main_loop_new(context, FALSE);
  ~GLibLoop() {
    g_main_loop_unref(loop);
    g_main_context_unref(context);
  }
  Loop ends() const {
    return {[this](std::function<void()> work) {
              attachToGLib(
                  context,
                  [](gpointer data) -> gboolean {
                    (*static_cast<std::function<void()>*>(data))();
                    return G_SOURCE_REMOVE;
                  },
                  new std::function<void()>(std::move(work)),
                  [](gpointer data) { delete static_cast<std::function<void()>*>(data); });
            },
            [this] { g_main_loop_run(loop); }, [this] { g_main_loop_quit(loop); }};
  }
};

const Case wake("runloop.wake", [](Report& report) {
  std::vector<double> ours;
  std::vector<double> theirs;
  for (int turn = 0; turn < 5; ++turn) {
    const OurLoop here{NSRunLoop::currentRunLoop()};
    OurLoop there;
    std::latch isThere(1);
    Loop other = there.ends();
    const auto port = NSPort::port();
    here.loop->addPort(port, NSDefaultRunLoopMode);
    other.run = [&] {
      there.loop = NSRunLoop::currentRunLoop();
      there.loop->addPort(NSPort::port(), NSDefaultRunLoopMode);
      isThere.count_down();
      there.loop->run();
    };
    other.post = [&, post = other.post](std::function<void()> work) {
      isThere.wait();
      post(std::move(work));
    };
    const std::vector<double> ourTimes = roundTrips(here.ends(), other);
    ours.insert(ours.end(), ourTimes.begin(), ourTimes.end());
    here.loop->removePort(port, NSDefaultRunLoopMode);

    const GLibLoop glibHere, glibThere;
    const std::vector<double> theirTimes = roundTrips(glibHere.ends(), glibThere.ends());
    theirs.insert(theirs.end(), theirTimes.begin(), theirTimes.end());
  }
  for (const auto& [name, part] :
       {std::pair("p50 of a round trip", 0.5), {"p99 of a round trip", 0.99}}) {
    report.add(
        {nanoseconds, name, "GLib", {{{}, percentile(ours, part), percentile(theirs, part)}}});
  }
});

#endif

}  // namespace

}  // namespace zeb::bench
