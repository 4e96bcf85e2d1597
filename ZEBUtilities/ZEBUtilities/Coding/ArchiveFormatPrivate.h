#pragma once

#include <ZEBPlatform/Foundation/NSString.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// The names that archive documents are made of, as the reader looks for them and `DataEncoder` writes
/// them. An external format: none of them may ever change.
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
/// one. Remembers those that it was asked for lately.
class FieldKeys {
 public:
  /// Valid until the next call.
  const NSString& stored(const StringKey& key);

 private:
  static constexpr std::string_view prefix = "c_";
  struct Remembered {
    std::uint32_t hash = 0;
    NSString own;
    NSString stored;
  };

  std::array<Remembered, 64> remembered_;
};

/// Going down into objects' own code stops, with an error, when less of the stack than this is left.
inline constexpr std::size_t leastRemainingStack = std::size_t{64} << 10;

}  // namespace zeb::detail
