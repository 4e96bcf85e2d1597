#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Foundation/detail/StringHash.h>
#include <ZEBPlatform/Runtime/SEL.h>
#include <ZEBPlatform/Runtime/detail/GrowingIndex.h>

#include <algorithm>
#include <memory>

namespace zeb {

namespace {

struct Names {
  detail::GrowingIndex<detail::SelectorRecord> index;
  detail::Lock additions;  ///< held while a record is added to the index

  const detail::SelectorRecord* find(std::string_view name, std::size_t hash) const noexcept {
    return index.find(hash, [&](const auto& record) { return record.name == name; });
  }
};

Names& names() {
  static detail::NeverDestroyed<Names> all;  // selectors are used until the process ends
  return *all;
}

std::size_t hashOfName(std::string_view name) noexcept {
  return detail::hashOfUTF8(name.data(), name.size());
}

}  // namespace

SEL detail::findSelector(NullableText name) noexcept {
  return SEL(names().find(name, hashOfName(name)));
}

SEL sel_registerName(NullableText name) {
  const std::size_t hash = hashOfName(name);
  if (const auto* known = names().find(name, hash)) return SEL(known);
  const detail::LockGuard guard(names().additions);
  if (const auto* known = names().find(name, hash)) return SEL(known);
  const auto arguments = static_cast<std::size_t>(std::count(name.begin(), name.end(), ':'));
  return SEL(&names().index.add(std::make_unique<detail::SelectorRecord>(
      detail::SelectorRecord{std::string(name), hash, arguments})));
}

}  // namespace zeb
