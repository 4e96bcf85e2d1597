#include <Foundation/StringHash.h>
#include <Runtime/GrowingIndex.h>
#include <Runtime/SEL.h>

#include <algorithm>
#include <memory>
#include <mutex>

namespace zeb {

SEL sel_registerName(std::string_view name) {
  struct Names {
    detail::GrowingIndex<detail::SelectorRecord> index;
    std::mutex additions;
  };
  static Names& names = *new Names;  // never destroyed: selectors are used until the very end

  const std::size_t hash = detail::hashOfUTF8(name.data(), name.size());
  const auto isNamed = [&](const detail::SelectorRecord& record) { return record.name == name; };
  if (const auto* known = names.index.find(hash, isNamed)) return SEL(known);
  std::lock_guard guard(names.additions);
  if (const auto* known = names.index.find(hash, isNamed)) return SEL(known);
  const auto arguments = static_cast<std::size_t>(std::count(name.begin(), name.end(), ':'));
  return SEL(&names.index.add(std::make_unique<detail::SelectorRecord>(
      detail::SelectorRecord{std::string(name), hash, arguments})));
}

}  // namespace zeb
