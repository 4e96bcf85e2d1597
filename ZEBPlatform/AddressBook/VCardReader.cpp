#include <ZEBPlatform/AddressBook/VCardLinesPrivate.h>
#include <ZEBPlatform/AddressBook/VCardReaderPrivate.h>
#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <ZEBPlatform/Url/NSString+PercentEncoding.h>

#include <array>
#include <string>

namespace zeb::detail {

namespace {

/// Strict about surrogates, which `NSString` would keep unpaired.
NSString textOfBytes(std::string_view bytes, bool isLatin1) {
  if (isASCII(bytes)) return NSString(bytes);
  std::string utf8;
  if (isLatin1) {
    for (const char c : bytes) appendUTF8(utf8, static_cast<unsigned char>(c));
    return NSString(utf8);
  }
  if (findMalformedUTF8(bytes) == std::string_view::npos) return NSString(bytes);
  while (!bytes.empty()) {
    const DecodedScalar decoded = decodeUTF8(bytes);
    appendUTF8(utf8, decoded.scalar);
    bytes.remove_prefix(decoded.length);
  }
  return NSString(utf8);
}

/// The texts that the property's value consists of, with one buffer for all of them.
class TextDecoder {
 public:
  /// The whole value as one text, without escapes; nil if it is empty.
  NSString text(const VCardLine& line) {
    std::string_view rest = line.value;
    return part(line, rest, "");
  }

  /// The text up to the first of the separators that is not escaped, which `rest` then follows.
  NSString part(const VCardLine& line, std::string_view& rest, std::string_view separators,
                bool joinsLists = false) {
    buffer_.clear();
    std::size_t place = 0;
    for (; place < rest.size() && separators.find(rest[place]) == std::string_view::npos; ++place) {
      const char c = rest[place];
      if (c == '\\' && place + 1 < rest.size()) {
        appendEscaped(rest[++place]);
      } else if (c == ',' && joinsLists) {
        buffer_ += ' ';
        while (place + 1 < rest.size() && rest[place + 1] == ' ') ++place;
      } else {
        buffer_ += c;
      }
    }
    rest.remove_prefix((std::min)(place + 1, rest.size()));
    const std::size_t begin = buffer_.find_first_not_of(' ');
    if (begin == std::string::npos) return nullptr;
    const std::size_t end = buffer_.find_last_not_of(' ') + 1;
    return textOfBytes(std::string_view(buffer_).substr(begin, end - begin), line.isLatin1);
  }

 private:
  void appendEscaped(char c) {
    if (c == 'n' || c == 'N') {
      buffer_ += '\n';
    } else {
      // Other characters than those that must be escaped keep their backslash.
      if (c != '\\' && c != ',' && c != ';' && c != ':') buffer_ += '\\';
      buffer_ += c;
    }
  }

  std::string buffer_;
};

constexpr std::string_view telephoneScheme = "tel:";
constexpr std::string_view mailScheme = "mailto:";

bool hasScheme(const VCardLine& line, std::string_view scheme) noexcept {
  return equalIgnoringCase(line.value.substr(0, scheme.size()), scheme);
}

/// As CNContactStore.h says; the URI is without its scheme.
NSString numberOfURI(const std::string& uri) {
  constexpr std::string_view extension = "ext=";
  std::string number;
  for (std::size_t begin = 0; begin <= uri.size();) {
    const std::size_t end = (std::min)(uri.find(';', begin), uri.size());
    const std::string_view part = std::string_view(uri).substr(begin, end - begin);
    if (begin == 0) {
      number = part;
    } else if (equalIgnoringCase(part.substr(0, extension.size()), extension)) {
      number += ',';
      number += part.substr(extension.size());
    }
    begin = end + 1;
  }
  const NSString decoded = stringByRemovingPercentEncoding(NSString(number));
  return decoded ? decoded : NSString(number);
}

class Reader {
 public:
  Reader(std::string_view text, FunctionView<void(VCard& card)> use,
         FunctionView<void(const BrokenVCard& card)> reject)
      : lines_(text), use_(use), reject_(reject) {}

  void read() {
    while (lines_.next(line_)) {
      if (line_.property == VCardProperty::begin) {
        begin();
      } else if (isInCard_) {
        line_.property == VCardProperty::end ? end() : take();
      }
    }
    if (isInCard_) rejectCard("END:VCARD is missing");
  }

 private:
  void begin() {
    if (!equalIgnoringCase(line_.value, "vcard")) return;
    if (isInCard_) rejectCard("END:VCARD is missing");
    isInCard_ = true;
    place_ = line_.place;
    problem_ = nullptr;
    card_ = VCard();
  }

  void end() {
    if (!equalIgnoringCase(line_.value, "vcard")) return;
    isInCard_ = false;
    const bool isEmpty =
        !card_.hasName() && card_.emailAddresses.empty() && card_.phoneNumbers.empty();
    if (!problem_ && isEmpty) problem_ = "it has neither a name nor an address nor a number";
    if (problem_) return rejectCard(problem_);
    use_(card_);
  }

  void rejectCard(const char* reason) {
    isInCard_ = false;
    reject_({place_, reason});
  }

  void take() {
    const auto keepFirst = [](NSString& field, NSString text) {
      if (!field) field = std::move(text);
    };
    const auto add = [](std::vector<Value>& list, NSString text) {
      if (!text.empty()) list.push_back(std::move(text));
    };
    std::string_view rest = line_.value;
    switch (line_.property) {
      case VCardProperty::version:
        if (line_.value != "3.0" && line_.value != "4.0")
          problem_ = "its version is neither 3.0 nor 4.0";
        break;
      case VCardProperty::kind:
        card_.isGroup = equalIgnoringCase(line_.value, "group");
        break;
      case VCardProperty::uid:
        keepFirst(card_.uid, texts_.text(line_));
        break;
      case VCardProperty::formattedName:
        keepFirst(card_.formattedName, texts_.text(line_));
        break;
      case VCardProperty::nickname:
        keepFirst(card_.nickname, texts_.part(line_, rest, ","));
        break;
      case VCardProperty::organization:
        keepFirst(card_.organizationName, texts_.part(line_, rest, ";"));
        break;
      case VCardProperty::name:
        takeName();
        break;
      case VCardProperty::email:
        if (hasScheme(line_, mailScheme)) line_.value.remove_prefix(mailScheme.size());
        add(card_.emailAddresses, texts_.text(line_));
        break;
      case VCardProperty::telephone:
        add(card_.phoneNumbers, takeNumber());
        break;
      case VCardProperty::other:
      case VCardProperty::begin:
      case VCardProperty::end:
        break;
    }
  }

  NSString takeNumber() {
    const bool hasTelephoneScheme = hasScheme(line_, telephoneScheme);
    if (hasTelephoneScheme) line_.value.remove_prefix(telephoneScheme.size());
    const bool isOtherURI = line_.value.find(':') != std::string_view::npos;
    NSString text = texts_.text(line_);
    if (!hasTelephoneScheme && (!line_.isURI || isOtherURI)) return text;
    return numberOfURI(text.utf8());
  }

  /// The first N with any part counts; a card may have others in other scripts.
  void takeName() {
    NSString* const parts[] = {&card_.familyName, &card_.givenName, &card_.middleName,
                               &card_.namePrefix, &card_.nameSuffix};
    for (const NSString* part : parts)
      if (*part) return;
    std::string_view rest = line_.value;
    for (NSString* part : parts) *part = texts_.part(line_, rest, ";", true);
  }

  VCardLines lines_;
  const FunctionView<void(VCard& card)> use_;
  const FunctionView<void(const BrokenVCard& card)> reject_;
  TextDecoder texts_;
  VCardLine line_;
  VCard card_;
  bool isInCard_ = false;
  std::size_t place_ = 0;
  const char* problem_ = nullptr;
};

}  // namespace

void readVCards(std::string_view text, FunctionView<void(VCard& card)> use,
                FunctionView<void(const BrokenVCard& card)> reject) {
  Reader(text, use, reject).read();
}

}  // namespace zeb::detail
