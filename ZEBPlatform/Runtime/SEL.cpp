#include <ZEBPlatform/Foundation/detail/StringHash.h>
#include <ZEBPlatform/Runtime/SEL.h>
#include <ZEBPlatform/Runtime/detail/GrowingIndex.h>

#include <algorithm>
#include <memory>
#include <mutex>

namespace zeb {

namespace {

struct Names {
  detail::GrowingIndex<detail::SelectorRecord> index;
  std::mutex additions;

  const detail::SelectorRecord* find(std::string_view name, std::size_t hash) const noexcept {
    return index.find(hash, [&](const auto& record) { return record.name == name; });
  }
};

Names& names() {
  static Names& all = *new Names;  // never destroyed: selectors are used until the very end
  return all;
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
  std::lock_guard guard(names().additions);
  if (const auto* known = names().find(name, hash)) return SEL(known);
  const auto arguments = static_cast<std::size_t>(std::count(name.begin(), name.end(), ':'));
  return SEL(&names().index.add(std::make_unique<detail::SelectorRecord>(
      detail::SelectorRecord{std::string(name), hash, arguments})));
}

}  // namespace zeb
