#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Linux/Clock.h>
#include <ZEBPlatform/Linux/detail/Thread.h>
#include <ZEBPlatform/Logging/OLGLogging.h>
#include <ZEBPlatform/Runtime/BlockConversion.h>
#include <ZEBPlatform/Runtime/ErrorConversion.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBUtilities/Constants/ZEBUtilitiesConstants.h>
#include <ZEBUtilities/JSON/ZEBJSONSerialization.h>
#include <ZEBUtilities/Timing/ZEBLaunchTime.h>

#include <string_view>
#include <utility>

namespace zeb {

namespace {

constexpr std::string_view sourceFile = "ZEBUtilities/ZEBUtilities/ZEBJSONSerialization";
constexpr double slowSeconds = 0.01;
constexpr const char* exceptionKey = "exception";

template <class... Arguments>
void log(std::int32_t level, std::string_view function, std::int32_t line, std::string_view format,
         const Arguments&... arguments) {
  const char* channel = ZEBUtilitiesLoggingChannel_JSON;
  if (!OLGCanLog(nullptr, level, channel)) return;
  OLGLogEx(nullptr, level, channel, sourceFile, function, line, format, arguments...);
}

/// Logs, when the scope is left in any way, if the main thread was blocked for too long.
class MainThreadTimer {
 public:
  MainThreadTimer(std::string_view function, std::string_view format) noexcept
      : function_(function), format_(format), start_(mach_absolute_time()) {}
  MainThreadTimer(const MainThreadTimer&) = delete;
  MainThreadTimer& operator=(const MainThreadTimer&) = delete;
  ~MainThreadTimer() {
    if (!isMainThread()) return;
    const double seconds = ZEBTimeIntervalBetweenMachTimes(start_, mach_absolute_time());
    if (!(seconds > slowSeconds)) return;
    log(OLGLevelWarning, function_, __LINE__, format_, static_cast<std::size_t>(seconds * 1000));
  }

 private:
  std::string_view function_;
  std::string_view format_;
  std::uint64_t start_;
};

void storeException(NSError* error, std::int64_t code, const NSException& exception) {
  if (!error || !error->isNil()) return;
  *error = NSError(NSCocoaErrorDomain, code, {{exceptionKey, static_cast<Value>(exception)}});
}

template <class Completion, class Work>
void completeOnMainQueue(Completion completion, Work work) {
  if (!completion) raiseInvalidArgument("a completion is needed");
  dispatch_async(dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT),
                 [completion = std::move(completion), work = std::move(work)]() mutable {
                   NSError error;
                   auto result = work(&error);
                   // Keeps `work` too, because it owns the input, which must live as long as the
                   // completion.
                   dispatch_async(dispatch_get_main_queue(),
                                  [completion = std::move(completion), work = std::move(work),
                                   result = std::move(result),
                                   error = std::move(error)] { completion(result, error); });
                 });
}

}  // namespace

NSData ZEBJSONSerialization::dataWithJSONObject(const Value& object, std::uint64_t options,
                                                NSError* error) {
  const MainThreadTimer timer(
      "+[ZEBJSONSerialization dataWithJSONObject:options:error:]_block_invoke",
      "JSON serialized on main thread is slow! %tums");
  try {
    return NSJSONSerialization::dataWithJSONObject(object, options, error);
  } catch (const NSException& exception) {
    log(OLGLevelError, "+[ZEBJSONSerialization dataWithJSONObject:options:error:]", __LINE__,
        "exception thrown in NSJSONSerialization: %@ (for obj %@)", static_cast<Value>(exception),
        object);
    storeException(error, NSPropertyListWriteInvalidError, exception);
    return nullptr;
  }
}

Value ZEBJSONSerialization::JSONObjectWithData(const NSData& data, std::uint64_t options,
                                               NSError* error) {
  return JSONObjectWithData(data, false, options, error);
}

Value ZEBJSONSerialization::JSONObjectWithData(const NSData& data, bool permitMainThread,
                                               std::uint64_t options, NSError* error) {
  constexpr std::string_view function =
      "+[ZEBJSONSerialization JSONObjectWithData:permitMainThread:options:error:]";
  if (!permitMainThread && isMainThread()) {
    log(OLGLevelError, function, __LINE__, "JSON deserialized on main thread!");
  }
  if (data.length() == 0) return {};
  const MainThreadTimer timer(
      "+[ZEBJSONSerialization JSONObjectWithData:permitMainThread:options:error:]_block_invoke",
      "JSON deserialized on main thread is slow! %tums");
  try {
    return NSJSONSerialization::JSONObjectWithData(data, options, error);
  } catch (const NSException& exception) {
    log(OLGLevelError, function, __LINE__,
        "exception thrown in NSJSONSerialization: %@ (for data w/ length %tu)",
        static_cast<Value>(exception), data.length());
    storeException(error, NSPropertyListReadCorruptError, exception);
    return {};
  }
}

void ZEBJSONSerialization::encodeJSONObject(const Value& object, std::uint64_t options,
                                            EncodingCompletion completion) {
  completeOnMainQueue(std::move(completion), [object, options](NSError* error) {
    return dataWithJSONObject(object, options, error);
  });
}

void ZEBJSONSerialization::decodeJSONData(const NSData& data, std::uint64_t options,
                                          DecodingCompletion completion) {
  completeOnMainQueue(std::move(completion), [data, options](NSError* error) {
    return JSONObjectWithData(data, options, error);
  });
}

Class* ZEBJSONSerialization::runtimeClass() {
  using Self = ZEBJSONSerialization;
  static Class* const cls = registerClass(
      "ZEBJSONSerialization",
      {
          classMethod("dataWithJSONObject:options:error:", &Self::dataWithJSONObject),
          classMethod("JSONObjectWithData:options:error:",
                      [](const NSData& data, std::uint64_t options, NSError* error) {
                        return Self::JSONObjectWithData(data, options, error);
                      }),
          classMethod(
              "JSONObjectWithData:permitMainThread:options:error:",
              [](const NSData& data, bool permitMainThread, std::uint64_t options, NSError* error) {
                return Self::JSONObjectWithData(data, permitMainThread, options, error);
              }),
          classMethod("encodeJSONObject:options:completion:", &Self::encodeJSONObject),
          classMethod("decodeJSONData:options:completion:", &Self::decodeJSONData),
      });
  return cls;
}

}  // namespace zeb
