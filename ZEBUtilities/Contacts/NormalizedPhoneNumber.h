#pragma once

#include <ZEBPlatform/Foundation/NSString.h>

namespace zeb {

/// The number in a form that can be compared: ASCII digits, after a "+" if the number begins with
/// one. "+1 (555) 010-0199 ext. 12" becomes "+15550100199".
///
///   - Digits of all scripts count. What stands before the first digit is left out, except "+".
///   - An extension is left out: the number ends at the first letter, comma, semicolon or "#" that
///     follows a digit. So letters that stand for digits are lost: "1-800-FLOWERS" becomes "1800".
///   - "(0)" after a "+" is left out, because that 0 is dialled only within the country.
///
/// No country code is added: "0555 1" and "+44 555 1" stay different. "" without digits and on nil.
NSString normalizedPhoneNumber(const NSString& number);

}  // namespace zeb
