#include <ZEBPlatform/Foundation/KeyedHash.h>
#include <ZEBPlatform/Url/NSURLQueryItem.h>

namespace zeb {

bool NSURLQueryItem::isEqual(const NSObject& other) const {
  const auto* item = dynamic_cast<const NSURLQueryItem*>(&other);
  return item && item->name_ == name_ && item->value_ == value_;
}

std::size_t NSURLQueryItem::hash() const noexcept {
  detail::KeyedHasher hasher;
  hasher.absorb(detail::keyedHashOf(name_));
  hasher.absorb(detail::keyedHashOf(value_));
  return hasher.finish();
}

std::string NSURLQueryItem::description() const {
  return value_.isNil() ? name_.utf8() : name_.utf8() + "=" + value_.utf8();
}

}  // namespace zeb
