#include <ZEBPlatform/Foundation/NSException.h>

namespace zeb {

const char* const NSInvalidArgumentException = "NSInvalidArgumentException";
const char* const NSRangeException = "NSRangeException";
const char* const NSGenericException = "NSGenericException";

class NSException::Details final : public NSObject {
 public:
  Details(const NSString& exceptionName, const NSString& exceptionReason,
          const NSDictionary& details)
      : name(exceptionName.copy()),
        reason(exceptionReason.copy()),
        userInfo(details.copy()),
        text(NSString::stringWithFormat("%@: %@", name, reason).utf8()) {}

  std::string className() const override { return "NSException"; }
  std::string description() const override { return text; }

  const NSString name;
  const NSString reason;
  const NSDictionary userInfo;
  const std::string text;
};

NSException::NSException(const NSString& name, const NSString& reason, const NSDictionary& userInfo)
    : details_(makeRef<Details>(name, reason, userInfo)) {}

NSException::NSException(Ref<NSObject> details) noexcept : details_(std::move(details)) {}

const NSException::Details* NSException::details() const noexcept {
  return static_cast<const Details*>(details_.get());
}

NSString NSException::name() const { return details()->name; }
NSString NSException::reason() const { return details()->reason; }
NSDictionary NSException::userInfo() const { return details()->userInfo; }
const char* NSException::what() const noexcept { return details()->text.c_str(); }

NSException::operator Value() const { return Value(details_); }

bool NSException::isException(const Value& value) noexcept {
  return static_cast<bool>(value.object<Details>());
}

NSException NSException::from(const Value& value) {
  if (!isException(value)) raiseInvalidArgument("the value holds no exception");
  return NSException(value.object<Details>());
}

void raiseInvalidArgument(const NSString& reason) {
  throw NSException(NSInvalidArgumentException, reason);
}

void raiseRange(std::size_t index, std::size_t count) {
  throw NSException(NSRangeException, NSString::stringWithFormat(
                                          "index %tu is beyond the bounds of %tu", index, count));
}

void requireRange(NSRange range, std::size_t count) {
  if (range.location <= count && range.length <= count - range.location) return;
  throw NSException(NSRangeException,
                    NSString::stringWithFormat("range {%tu, %tu} is beyond the bounds of %tu",
                                               range.location, range.length, count));
}

}  // namespace zeb
