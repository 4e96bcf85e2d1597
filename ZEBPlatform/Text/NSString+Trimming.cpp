#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <ZEBPlatform/Text/NSString+Trimming.h>
#include <ZEBPlatform/Text/detail/StringUnits.h>

namespace zeb {

NSString stringByTrimmingCharactersInSet(const NSString& string, const Ref<NSCharacterSet>& set) {
  if (!set || string.empty()) return string.copy();
  return detail::withUnits(string, [&](auto units) {
    std::size_t begin = 0;
    while (begin < units.size()) {
      std::size_t next = begin;
      if (!set->longCharacterIsMember(detail::nextCharacter(units, next))) break;
      begin = next;
    }
    std::size_t end = units.size();
    while (end > begin) {
      std::size_t previous = end;
      if (!set->longCharacterIsMember(detail::previousCharacter(units, previous))) break;
      end = previous;
    }
    if (end - begin == units.size()) return string.copy();
    return detail::textOfUnits(units.substr(begin, end - begin));
  });
}

NSArray componentsSeparatedByCharactersInSet(const NSString& string,
                                             const Ref<NSCharacterSet>& set) {
  if (string.isNil()) return nullptr;
  NSMutableArray pieces;
  detail::withUnits(string, [&](auto units) {
    std::size_t begin = 0;
    for (std::size_t index = 0; set && index < units.size();) {
      const std::size_t end = index;
      if (!set->longCharacterIsMember(detail::nextCharacter(units, index))) continue;
      pieces.addObject(detail::textOfUnits(units.substr(begin, end - begin)));
      begin = index;
    }
    pieces.addObject(detail::textOfUnits(units.substr(begin)));
  });
  return pieces.copy();
}

}  // namespace zeb
