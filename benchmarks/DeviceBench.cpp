#include <ZEBPlatform/Dispatch.h>
#include <ZEBPlatform/RunLoop.h>
#include <ZEBUtilities/Device.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "Bench.h"

#if ZEB_BENCH_HAVE_STACKTRACE
#include <boost/stacktrace.hpp>
#endif

namespace zeb::bench {

namespace {

#if ZEB_BENCH_HAVE_STACKTRACE

/// Calls the body with about this number of functions below it on the stack.
[[gnu::noinline]] void atDepth(int depth, const std::function<void()>& body) {
  if (depth == 0) {
    body();
  } else {
    atDepth(depth - 1, body);
  }
  consume(depth);
}

constexpr int depth = 20;  // with the functions of the run loop or queue, about 30

const Case thread("sample.thread", [](Report& report) {
  const auto target = makeRef<NSThread>([] {
    zeb_setCallStackPeekEnabled(NSThread::currentThread(), true);
    NSRunLoop::currentRunLoop()->addPort(NSPort::port(), NSDefaultRunLoopMode);
    atDepth(depth, [] { NSRunLoop::currentRunLoop()->run(); });
    zeb_setCallStackPeekEnabled(NSThread::currentThread(), false);
  });
  target->start();
  performOnThread(target, [] {}, true);
  const dispatch_queue_t queue = dispatch_queue_create("boost::stacktrace");
  NSArray stack;
  std::string text;
  const auto ours = [&] { stack = zeb_callStackSymbols(target); };
  const auto theirs = [&] {
    const dispatch_semaphore_t isDone = dispatch_semaphore_create(0);
    dispatch_async(queue, [&, isDone] {
      atDepth(depth, [&] { text = boost::stacktrace::to_string(boost::stacktrace::stacktrace()); });
      dispatch_semaphore_signal(isDone);
    });
    dispatch_semaphore_wait(isDone, DISPATCH_TIME_FOREVER);
  };
  const Seconds seconds = measureInTurns(ours, theirs);
  require(stack.count() > depth && static_cast<int>(std::ranges::count(text, '\n')) > depth,
          "a stack is too short");
  target->runLoop()->performBlock([target] { target->runLoop()->stop(); });
  performOnThread(target, [] {}, true);
  report.add(nanosecondsEach("zeb_callStackSymbols of another thread",
                             "boost::stacktrace as text on a queue's thread", seconds, 1));
});

const Case symbols("sample.symbols", [](Report& report) {
  boost::stacktrace::stacktrace stack;
  atDepth(depth, [&] { stack = boost::stacktrace::stacktrace(); });
  std::vector<void*> addresses;
  for (const auto& frame : stack) addresses.push_back(const_cast<void*>(frame.address()));
  NSArray lines;
  std::string text;
  const auto ours = [&] {
    lines = ZEBStackTraceSampler::_stackWithProgramCounters(addresses.data(), addresses.size());
  };
  const auto theirs = [&] { text = boost::stacktrace::to_string(stack); };
  const Seconds seconds = measureInTurns(ours, theirs);
  require(lines.count() == stack.size() && stack.size() > depth, "a stack is too short");
  report.add(nanosecondsEach("_stackWithProgramCounters", "boost::stacktrace::to_string", seconds,
                             addresses.size()));
});

#else

const Case thread("sample.thread", [](Report& report) { report.skip("boost::stacktrace"); });
const Case symbols("sample.symbols", [](Report& report) { report.skip("boost::stacktrace"); });

#endif

}  // namespace

}  // namespace zeb::bench
