#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Dispatch/ConcurrentQueuePrivate.h>
#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Dispatch/QueueFramePrivate.h>
#include <ZEBPlatform/Dispatch/SerialQueuePrivate.h>
#include <ZEBPlatform/Linux/detail/Console.h>

#include <array>

namespace zeb {

namespace {

using detail::Urgency;

Urgency urgencyOf(dispatch_qos_class_t qos) noexcept {
  switch (qos) {
    case QOS_CLASS_USER_INTERACTIVE:
      return Urgency::userInteractive;
    case QOS_CLASS_USER_INITIATED:
      return Urgency::userInitiated;
    case QOS_CLASS_UTILITY:
      return Urgency::utility;
    case QOS_CLASS_BACKGROUND:
      return Urgency::background;
    case QOS_CLASS_DEFAULT:
      break;
  }
  return Urgency::standard;
}

/// The pool itself, as a queue.
class GlobalQueue final : public DispatchQueue {
 public:
  GlobalQueue(std::string_view label, Urgency urgency) : DispatchQueue(label), urgency_(urgency) {}

  void async(detail::WorkItem& item) noexcept override {
    detail::ThreadPool::shared().submit(item, urgency_);
  }
  void sync(FunctionView<void()> block) override { block(); }
  void barrierAsync(detail::WorkItem& item) noexcept override { async(item); }
  void barrierSync(FunctionView<void()> block) override { block(); }

 private:
  const Urgency urgency_;
};

const dispatch_queue_t& globalQueue(Urgency urgency) {
  using Queues = std::array<dispatch_queue_t, detail::urgencyCount>;
  static const detail::NeverDestroyed<Queues> queues(
      Queues{makeRef<GlobalQueue>("user-interactive", Urgency::userInteractive),
             makeRef<GlobalQueue>("user-initiated", Urgency::userInitiated),
             makeRef<GlobalQueue>("default", Urgency::standard),
             makeRef<GlobalQueue>("utility", Urgency::utility),
             makeRef<GlobalQueue>("background", Urgency::background)});
  return (*queues)[static_cast<std::size_t>(urgency)];
}

}  // namespace

dispatch_queue_t dispatch_queue_create(std::string_view label, DispatchQueueKind kind,
                                       dispatch_qos_class_t qos) {
  if (kind == DispatchQueueKind::concurrent)
    return makeRef<detail::ConcurrentQueue>(label, urgencyOf(qos));
  return makeRef<detail::SerialQueue>(label, urgencyOf(qos));
}

dispatch_queue_t dispatch_get_global_queue(std::int64_t priorityOrQos, std::uintptr_t flags) {
  if (flags != 0) return nullptr;
  switch (priorityOrQos) {
    case QOS_CLASS_USER_INTERACTIVE:
      return globalQueue(Urgency::userInteractive);
    case QOS_CLASS_USER_INITIATED:
    case DISPATCH_QUEUE_PRIORITY_HIGH:
      return globalQueue(Urgency::userInitiated);
    case QOS_CLASS_DEFAULT:
    case DISPATCH_QUEUE_PRIORITY_DEFAULT:
      return globalQueue(Urgency::standard);
    case QOS_CLASS_UTILITY:
    case DISPATCH_QUEUE_PRIORITY_LOW:
      return globalQueue(Urgency::utility);
    case QOS_CLASS_BACKGROUND:
    case DISPATCH_QUEUE_PRIORITY_BACKGROUND:
      return globalQueue(Urgency::background);
    default:
      return nullptr;
  }
}

const char* dispatch_queue_get_label(const dispatch_queue_t& queue) noexcept {
  return queue ? queue->label().c_str() : "";
}

void detail::reportDeadlock(const char* function, const DispatchQueue& queue) noexcept {
  fatal(std::string(function) + " onto the queue \"" + queue.label() +
        "\", which the calling block is running on: it would wait for itself.");
}

}  // namespace zeb
