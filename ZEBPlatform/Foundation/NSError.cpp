#include <ZEBPlatform/Foundation/KeyedHash.h>
#include <ZEBPlatform/Foundation/NSError.h>

#include <ostream>

namespace zeb {

const char* const NSCocoaErrorDomain = "NSCocoaErrorDomain";
const char* const NSPOSIXErrorDomain = "NSPOSIXErrorDomain";
const char* const NSURLErrorDomain = "NSURLErrorDomain";
const char* const kCFErrorDomainCFNetwork = "kCFErrorDomainCFNetwork";
const char* const NSLocalizedDescriptionKey = "NSLocalizedDescription";
const char* const NSLocalizedFailureReasonErrorKey = "NSLocalizedFailureReason";
const char* const NSUnderlyingErrorKey = "NSUnderlyingError";
const char* const NSFilePathErrorKey = "NSFilePath";

class NSError::Details final : public NSObject {
 public:
  Details(const NSString& errorDomain, std::int64_t errorCode, const NSDictionary& details)
      : domain(errorDomain.copy()),
        code(errorCode),
        userInfo(details.isNil() ? NSDictionary::dictionary() : details.copy()),
        text(describe().utf8()) {}

  bool isEqual(const NSObject& other) const override {
    const auto* error = dynamic_cast<const Details*>(&other);
    return error && error->code == code && error->domain == domain && error->userInfo == userInfo;
  }
  std::size_t hash() const noexcept override {
    // The details may lead to other errors; the text distinguishes most errors.
    detail::KeyedHasher hasher;
    hasher.absorb(detail::keyedHashOf(domain));
    hasher.absorb(static_cast<std::uint64_t>(code));
    hasher.absorb(detail::keyedHash(text));
    return hasher.finish();
  }
  std::string className() const override { return "NSError"; }
  std::string description() const override {
    return NSString::stringWithFormat("Error Domain=%@ Code=%lld \"%s\"", domain, code, text)
        .utf8();
  }

  const NSString domain;
  const std::int64_t code;
  const NSDictionary userInfo;
  const std::string text;  ///< kept, because `what()` returns a pointer to it

 private:
  NSString describe() const {
    const NSString given(userInfo[NSString(NSLocalizedDescriptionKey)]);
    if (!given.isNil()) return given;
    return NSString::stringWithFormat("The operation couldn't be completed. (%@ error %lld.)",
                                      domain, code);
  }
};

NSError::NSError(const NSString& domain, std::int64_t code, const NSDictionary& userInfo)
    : details_(makeRef<Details>(domain, code, userInfo)) {}

NSError::NSError(Ref<NSObject> details) noexcept : details_(std::move(details)) {}

const NSError::Details* NSError::details() const noexcept {
  return static_cast<const Details*>(details_.get());
}

NSString NSError::domain() const { return details_ ? details()->domain : NSString(); }
std::int64_t NSError::code() const noexcept { return details_ ? details()->code : 0; }
NSDictionary NSError::userInfo() const { return details_ ? details()->userInfo : NSDictionary(); }

NSString NSError::localizedDescription() const {
  return details_ ? NSString(std::string_view(details()->text)) : NSString();
}

NSString NSError::localizedFailureReason() const {
  return NSString(userInfo()[NSString(NSLocalizedFailureReasonErrorKey)]);
}

NSError NSError::underlyingError() const {
  return from(userInfo()[NSString(NSUnderlyingErrorKey)]);
}

const char* NSError::what() const noexcept { return details_ ? details()->text.c_str() : ""; }

NSError::operator Value() const { return Value(details_); }

NSError NSError::from(const Value& value) noexcept { return NSError(value.object<Details>()); }

bool operator==(const NSError& left, const NSError& right) {
  if (left.isNil() || right.isNil()) return left.isNil() == right.isNil();
  return left.details()->isEqual(*right.details_);
}

std::ostream& operator<<(std::ostream& stream, const NSError& error) {
  return stream << static_cast<Value>(error);
}

}  // namespace zeb
