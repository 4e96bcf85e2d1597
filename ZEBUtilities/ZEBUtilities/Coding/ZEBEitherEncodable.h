#pragma once

#include <ZEBUtilities/Coding/ZEBEncodable.h>

#include <utility>
#include <variant>

namespace zeb {

/// The result of a decoding builder: a value-model object or a shared object.
class ZEBEitherEncodable {
 public:
  static ZEBEitherEncodable native(ZEBEncodable encodable) {
    return ZEBEitherEncodable(std::move(encodable));
  }
  static ZEBEitherEncodable legacy(Ref<ZEBObjCEncodable> encodable) {
    return ZEBEitherEncodable(std::move(encodable));
  }

  bool isNative() const noexcept { return std::holds_alternative<ZEBEncodable>(encodable_); }
  bool isLegacy() const noexcept { return !isNative(); }
  /// Nil for the other case.
  ZEBEncodable native() const {
    return isNative() ? std::get<ZEBEncodable>(encodable_) : ZEBEncodable();
  }
  Ref<ZEBObjCEncodable> legacy() const {
    return isLegacy() ? std::get<Ref<ZEBObjCEncodable>>(encodable_) : nullptr;
  }

  /// The object of either kind as a value.
  Value value() const& { return ZEBEitherEncodable(*this).takenValue(); }
  Value value() && { return takenValue(); }

 private:
  explicit ZEBEitherEncodable(std::variant<ZEBEncodable, Ref<ZEBObjCEncodable>> encodable) noexcept
      : encodable_(std::move(encodable)) {}

  Value takenValue() {
    if (auto* native = std::get_if<ZEBEncodable>(&encodable_)) return std::move(*native).value();
    return Value(std::get<Ref<ZEBObjCEncodable>>(std::move(encodable_)));
  }

  std::variant<ZEBEncodable, Ref<ZEBObjCEncodable>> encodable_;
};

}  // namespace zeb
