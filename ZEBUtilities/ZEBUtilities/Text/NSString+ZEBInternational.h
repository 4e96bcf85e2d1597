#pragma once

#include <ZEBPlatform/Foundation/NSString.h>

/// The direction of texts whose language is not known in advance, and marks that choose it. A nil
/// text counts as empty. Any thread may call these functions, as long as a mutable text does not
/// change meanwhile.
///
/// Right-to-left characters are the code units U+0590 to U+08FF (Hebrew, Arabic and neighbours),
/// U+FB1D to U+FDFD and U+FE70 to U+FEFC (their presentation forms); scripts beyond U+FFFF do not
/// count. Direction control characters are U+061C, U+200E, U+200F, U+202A to U+202E and U+2066 to
/// U+2069.
namespace zeb {

/// Whether there is a right-to-left character.
bool zeb_containsRTLCharacters(const NSString& string) noexcept;

/// Whether more than three tenths of the code units are right-to-left characters, calculated in
/// single precision. Direction control characters are not counted on either side; letters, digits,
/// spaces, punctuation and the halves of emoji count as others. False of a text that has no other
/// units than direction control characters.
bool zeb_plainTextShouldBeRenderedFromRight(const NSString& string) noexcept;

/// The same for the first 140 code units.
bool zeb_statusTextShouldBeRenderedFromRight(const NSString& string) noexcept;

/// A copy without direction control characters; the same text if it has none. Other invisible
/// characters such as U+200B and U+FEFF stay.
[[nodiscard]] NSString zeb_stringByRemovingAllDirectionControlCharacters(const NSString& string);

/// The text behind the mark of the direction of the user's language: U+200F if
/// `ZEBIsUsingRTLLanguage`, else U+200E. Nil for nil.
[[nodiscard]] NSString zeb_labelTextByAddingDirectionControlCharacter(const NSString& string);

/// Whether the text begins with U+200F.
bool zeb_labelTextShouldBeRenderedFromRight(const NSString& string) noexcept;

}  // namespace zeb
