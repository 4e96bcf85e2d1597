#pragma once

#include <Foundation/NSDictionary.h>
#include <Foundation/NSString.h>

#include <cstddef>
#include <string_view>

/// The names that archive documents are made of. An external format: none of them may ever change.
namespace zeb::detail {

struct ArchiveNames {
  /// Made once, never destroyed.
  static const ArchiveNames& shared();

  const NSString root{"root"};
  const NSString encodableName{"encodableName"};
  const NSString type{"type"};
  const NSString arrayValues{"arrayValues"};
  const NSString keys{"keys"};
  const NSString values{"values"};
  const NSString x{"x"};
  const NSString y{"y"};
  const NSString width{"width"};
  const NSString height{"height"};
  const NSString location{"location"};
  const NSString length{"length"};
  const NSString bytes{"bytes"};
  const NSString bits{"bits"};
  const NSString interval{"interval"};
  const NSString latitude{"lat"};
  const NSString longitude{"long"};
  const NSString altitude{"altitude"};
  const NSString horizontalAccuracy{"horizontalAccuracy"};
  const NSString verticalAccuracy{"verticalAccuracy"};
  const NSString course{"course"};
  const NSString speed{"speed"};

  const NSString typeFloat{"Float"};
  const NSString typeDouble{"Double"};
  const NSString typeArray{"Array"};
  const NSString typeDictionary{"Dictionary"};
  const NSString typeUTF16String{"UTF16String"};
  const NSString typeData{"Data"};
  const NSString typeDate{"Date"};
  const NSString typeCGRect{"CGRect"};
  const NSString typeCGPoint{"CGPoint"};
  const NSString typeCGSize{"CGSize"};
  const NSString typeNSRange{"NSRange"};
  const NSString typeCLLocation{"CLLocation"};
};

/// The keys of objects' own fields as documents have them: prefixed, so that they can't meet a reserved
/// one. Each is made once.
class FieldKeys {
 public:
  NSString stored(const StringKey& key);

 private:
  static constexpr std::string_view prefix = "c_";

  NSMutableDictionary stored_;
};

/// Going down into objects' own code stops, with an error, when less of the stack than this is left.
inline constexpr std::size_t leastRemainingStack = std::size_t{64} << 10;

}  // namespace zeb::detail
