#include "Arrival.h"

#include <Observation/Observable.h>
#include <ZEBPlatform/Dispatch/DispatchSource.h>
#include <ZEBPlatform/Foundation/Format.h>
#include <ZEBPlatform/RunLoop/NSRunLoop.h>
#include <ZEBUtilities/JSON/ZEBJSONSerialization.h>
#include <ZEBUtilities/Tasks/ZEBBackgroundQueue.h>
#include <ZEBUtilities/Timing/ZEBTimer.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <stdexcept>

namespace zeb::timeline {

namespace {

constexpr std::size_t pieces = 12;
constexpr std::int64_t nanosecondsPerPiece = 40 * NSEC_PER_MSEC;
constexpr double secondsPerRefresh = 0.1;

struct Progress {
  std::size_t pieces = 0;
  std::size_t bytes = 0;
};

/// The sender: delivers one piece after the other on the background queue.
class Sender : public NSObject {
 public:
  Sender(const NSData& data, ObservableInput<Progress> progress)
      : data_(data), progress_(std::move(progress)) {}

  void sendNext() {
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, nanosecondsPerPiece),
                   ZEBBackgroundQueue::sharedBackgroundQueue(),
                   [self = Ref(this)] { self->send(); });
  }

 private:
  void send() {
    ++sent_;
    progress_.update({sent_, data_.length() * sent_ / pieces});
    if (sent_ < pieces) sendNext();
  }

  const NSData data_;
  const ObservableInput<Progress> progress_;
  std::size_t sent_ = 0;  ///< on the background queue only
};

/// "arriving ████████░░░░ 5.1 of 7.6 KB": one line that is overwritten on a terminal, and several
/// lines elsewhere.
class ProgressLine {
 public:
  ProgressLine(const Screen& screen, std::size_t total)
      : isTerminal_(screen.hasColours), total_(total) {}

  void draw(const Progress& progress) {
    std::string bar;
    for (std::size_t place = 0; place < pieces; ++place) {
      bar += place < progress.pieces ? "█" : "░";
    }
    const NSString text = NSString::stringWithFormat("arriving %s %.1f of %.1f KB", bar,
                                                     kilobytes(progress.bytes), kilobytes(total_));
    std::printf(isTerminal_ ? "\r%s" : "%s\n", text.utf8().c_str());
    std::fflush(stdout);
    ++refreshes_;
  }
  /// Ends the line, so that other output can follow.
  void finish() {
    if (isTerminal_) std::printf("\r\033[K");
  }
  std::size_t refreshes() const { return refreshes_; }

 private:
  static double kilobytes(std::size_t bytes) { return static_cast<double>(bytes) / 1000; }

  const bool isTerminal_;
  const std::size_t total_;
  std::size_t refreshes_ = 0;
};

}  // namespace

void receive(const NSData& data, const Screen& screen, Steps& steps,
             const Block<void(const Value& document)>& use) {
  // The serializer does not report empty data as an error, because an empty response has none.
  if (data.isEmpty()) throw std::runtime_error("No value at line 1, column 1 (byte offset 0).");

  // Everything below happens on the main thread, in blocks of its queue and timers of its run loop.
  const Ref<NSRunLoop> loop = NSRunLoop::mainRunLoop();
  std::exception_ptr failure;
  const auto finish = [&](const Value& document, const NSError& error) {
    steps.finish("parse", data.length());
    try {
      if (document.isNil()) throw error;
      use(document);
    } catch (...) {
      failure = std::current_exception();
    }
    loop->stop();
  };

  Progress latest;
  ProgressLine line(screen, data.length());
  steps.start();
  const auto timer = ZEBTimer::scheduledTimerWithTimeInterval(
      secondsPerRefresh, [&](const Ref<ZEBTimer>&) { line.draw(latest); }, true);
  const auto [input, progress] = Observable<Progress>::create();
  const auto token = progress->observe([&](const Progress& now) {
    latest = now;
    if (now.pieces < pieces) return;
    timer->invalidate();
    line.draw(latest);
    line.finish();
    steps.finish("receive", data.length());
    steps.remark(NSString::stringWithFormat("pieces: %tu, refreshes of the line: %tu", pieces,
                                            line.refreshes()));
    steps.start();
    ZEBJSONSerialization::decodeJSONData(data, NSJSONReadingFragmentsAllowed, finish);
  });
  makeRef<Sender>(data, input)->sendNext();
  loop->run();
  if (failure) std::rethrow_exception(failure);
}

}  // namespace zeb::timeline
