#include <ZEBPlatform/Foundation/Format.h>
#include <ZEBPlatform/Foundation/KeyedHash.h>
#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Geometry/NSValue.h>
#include <ZEBPlatform/Memory/Overloaded.h>

#include <bit>

namespace zeb {

bool NSValue::isEqual(const NSObject& other) const noexcept {
  const auto* value = dynamic_cast<const NSValue*>(&other);
  return value && value->content_ == content_;
}

std::size_t NSValue::hash() const noexcept {
  const auto mixed = [](std::initializer_list<double> components) {
    detail::KeyedHasher hasher;
    for (const double component : components) {
      // Equal components have equal bits, except for the two zeros.
      hasher.absorb(std::bit_cast<std::uint64_t>(component == 0 ? 0.0 : component));
    }
    return hasher.finish();
  };
  return std::visit(
      Overloaded{
          [&](const CGRect& rect) {
            return mixed({rect.origin.x, rect.origin.y, rect.size.width, rect.size.height});
          },
          [&](const CGPoint& point) { return mixed({point.x, point.y}); },
          [&](const CGSize& size) { return mixed({size.width, size.height}); },
          [](const NSRange& range) {
            detail::KeyedHasher hasher;
            hasher.absorb(range.location);
            hasher.absorb(range.length);
            return hasher.finish();
          },
          [&](const CGAffineTransform& matrix) {
            return mixed({matrix.a, matrix.b, matrix.c, matrix.d, matrix.tx, matrix.ty});
          },
      },
      content_);
}

std::string NSValue::description() const {
  return std::visit(
      Overloaded{
          [](const CGRect& rect) {
            return formattedText("{{%@, %@}, {%@, %@}}",
                                 {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height});
          },
          [](const CGPoint& point) { return formattedText("{%@, %@}", {point.x, point.y}); },
          [](const CGSize& size) { return formattedText("{%@, %@}", {size.width, size.height}); },
          [](const NSRange& range) {
            return formattedText("{%tu, %tu}", {range.location, range.length});
          },
          [](const CGAffineTransform& matrix) {
            return formattedText("[%@, %@, %@, %@, %@, %@]",
                                 {matrix.a, matrix.b, matrix.c, matrix.d, matrix.tx, matrix.ty});
          },
      },
      content_);
}

Value boxed(const NSValue::Content& record) { return makeRef<NSValue>(record); }

NSRange rangeArgument(const Value& value) {
  if (const NSRange* range = unboxed<NSRange>(value)) return *range;
  raiseInvalidArgument("a range was expected, as an NSValue, but the argument is another value");
}

}  // namespace zeb
