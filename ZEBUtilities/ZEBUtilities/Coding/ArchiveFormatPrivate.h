#pragma once

#include <ZEBPlatform/Foundation/NSString.h>

#include <array>
#include <cstdint>

/// Every name that archive documents are made of. The encoder and the decoder both take them from
/// here. They are an external format, so none of them may ever change.
namespace zeb::detail::archive {

/// The key that error texts give to the document itself.
inline constexpr char root[] = "root";

/// Stands before the keys of objects' own fields, so that they cannot collide with a reserved key.
inline constexpr char fieldPrefix[] = "c_";

// The reserved keys. ------------------------------------------------------------------------------

/// Of an object's dictionary: the name of the object's type.
inline constexpr char encodableName[] = "encodableName";
/// Of a tagged dictionary: one of the types below, which decides about its other keys.
inline constexpr char type[] = "type";

inline constexpr char arrayValues[] = "arrayValues";
inline constexpr char keys[] = "keys";
inline constexpr char values[] = "values";
inline constexpr char x[] = "x";
inline constexpr char y[] = "y";
inline constexpr char width[] = "width";
inline constexpr char height[] = "height";
inline constexpr char location[] = "location";
inline constexpr char length[] = "length";
inline constexpr char bytes[] = "bytes";
inline constexpr char bits[] = "bits";
inline constexpr char interval[] = "interval";
inline constexpr char latitude[] = "lat";
inline constexpr char longitude[] = "long";
inline constexpr char altitude[] = "altitude";
inline constexpr char horizontalAccuracy[] = "horizontalAccuracy";
inline constexpr char verticalAccuracy[] = "verticalAccuracy";
inline constexpr char course[] = "course";
inline constexpr char speed[] = "speed";

// The types of tagged dictionaries. ---------------------------------------------------------------

inline constexpr char typeFloat[] = "Float";
inline constexpr char typeDouble[] = "Double";
inline constexpr char typeArray[] = "Array";
inline constexpr char typeDictionary[] = "Dictionary";
inline constexpr char typeUTF16String[] = "UTF16String";
inline constexpr char typeData[] = "Data";
inline constexpr char typeDate[] = "Date";
inline constexpr char typeCGRect[] = "CGRect";
inline constexpr char typeCGPoint[] = "CGPoint";
inline constexpr char typeCGSize[] = "CGSize";
inline constexpr char typeNSRange[] = "NSRange";
inline constexpr char typeCLLocation[] = "CLLocation";

}  // namespace zeb::detail::archive

namespace zeb::detail {

/// The prefixed keys of objects' own fields. Remembers recently requested ones, because objects of
/// one type ask for the same keys again and again.
class FieldKeys {
 public:
  /// Valid until the next call.
  const NSString& stored(const StringKey& key);

 private:
  struct Remembered {
    std::uint32_t hash = 0;
    NSString own;
    NSString stored;
  };

  std::array<Remembered, 64> remembered_;
};

}  // namespace zeb::detail
