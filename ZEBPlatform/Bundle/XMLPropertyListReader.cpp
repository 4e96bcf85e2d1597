#include <ZEBPlatform/Bundle/NSPropertyListSerialization.h>
#include <ZEBPlatform/Bundle/PropertyListBuilderPrivate.h>
#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/detail/NumberText.h>

#include <expat.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <exception>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <utility>

namespace zeb::detail {

namespace {

constexpr std::string_view space = " \t\r\n";

bool isSpace(char character) noexcept { return space.find(character) != space.npos; }

std::string_view trimmed(std::string_view text) noexcept {
  const std::size_t begin = text.find_first_not_of(space);
  if (begin == text.npos) return {};
  return text.substr(begin, text.find_last_not_of(space) + 1 - begin);
}

/// Decimal, or hexadecimal after "0x", with or without a sign; nil if the text is no integer or
/// exceeds 64 bits.
Value integerOf(std::string_view text) {
  text = trimmed(text);
  const bool isNegative = text.starts_with('-');
  if (isNegative || text.starts_with('+')) text.remove_prefix(1);
  const bool isHexadecimal = text.starts_with("0x") || text.starts_with("0X");
  if (isHexadecimal) text.remove_prefix(2);
  std::uint64_t magnitude = 0;
  const char* const end = text.data() + text.size();
  const auto [last, failure] =
      std::from_chars(text.data(), end, magnitude, isHexadecimal ? 16 : 10);
  if (failure != std::errc() || last != end) return nullptr;
  constexpr auto max = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  if (magnitude <= max) {
    const auto number = static_cast<std::int64_t>(magnitude);
    return isNegative ? -number : number;
  }
  if (!isNegative) return magnitude;
  return magnitude == max + 1 ? Value(std::numeric_limits<std::int64_t>::min()) : Value();
}

/// Nil if the text is no number or beyond the range of doubles.
Value realOf(std::string_view text) {
  text = trimmed(text);
  if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
  double number = 0;
  const char* const end = text.data() + text.size();
  const auto [last, failure] = std::from_chars(text.data(), end, number);
  if (last != end || failure == std::errc::invalid_argument) return nullptr;
  if (failure == std::errc()) return number;
  const bool isNegative = text.starts_with('-');
  if (!isTinyDecimal(text.substr(isNegative))) return nullptr;
  return isNegative ? -0.0 : 0.0;
}

/// Takes the form 0000-00-00T00:00:00Z with all leading zeros; nil for other text and invalid
/// dates.
Value dateOf(std::string_view text) {
  constexpr std::string_view form = "0000-00-00T00:00:00Z";
  text = trimmed(text);
  const auto fits = [](char character, char wanted) {
    return wanted == '0' ? character >= '0' && character <= '9' : character == wanted;
  };
  if (!std::ranges::equal(text, form, fits)) return nullptr;
  const auto part = [&](std::size_t begin, std::size_t length) {
    unsigned number = 0;
    std::from_chars(text.data() + begin, text.data() + begin + length, number);
    return number;
  };
  const std::chrono::year_month_day day(std::chrono::year(static_cast<int>(part(0, 4))),
                                        std::chrono::month(part(5, 2)),
                                        std::chrono::day(part(8, 2)));
  const unsigned hour = part(11, 2);
  const unsigned minute = part(14, 2);
  const unsigned second = part(17, 2);
  if (!day.ok() || hour > 23 || minute > 59 || second > 59) return nullptr;
  const auto days = static_cast<double>(std::chrono::sys_days(day).time_since_epoch().count());
  return NSDate::dateWithTimeIntervalSince1970(days * 86400 + hour * 3600 + minute * 60 + second);
}

/// Base64 that may contain white space; nil if the text is not base64.
Value dataOf(std::string text) {
  std::erase_if(text, isSpace);
  return NSData::dataWithBase64EncodedString(text);
}

/// Passes the XML parser's events to the builder.
class Reader {
 public:
  explicit Reader(bool keepsMutable) : builder_(NSPropertyListMaximumObjectCount, keepsMutable) {
    parser_.reset(XML_ParserCreate(nullptr));
    if (!parser_) throw std::bad_alloc();
    XML_SetUserData(parser_.get(), this);
    XML_SetElementHandler(
        parser_.get(),
        [](void* self, const XML_Char* name, const XML_Char**) {
          handle(self, [&](Reader& reader) { reader.startElement(name); });
        },
        [](void* self, const XML_Char*) {
          handle(self, [](Reader& reader) { reader.endElement(); });
        });
    XML_SetCharacterDataHandler(parser_.get(), [](void* self, const XML_Char* text, int length) {
      handle(self,
             [&](Reader& reader) { reader.takeText({text, static_cast<std::size_t>(length)}); });
    });
    // An internal document type can declare entities, whose expansion is unlimited.
    XML_SetStartDoctypeDeclHandler(parser_.get(), [](void* self, const XML_Char*, const XML_Char*,
                                                     const XML_Char*, int hasInnerDeclarations) {
      handle(self, [&](Reader& reader) {
        if (hasInnerDeclarations) reader.builder_.fail("its document type has declarations");
      });
    });
    // Declarations of an external document type are not read.
    XML_SetSkippedEntityHandler(parser_.get(), [](void* self, const XML_Char*, int) {
      handle(self, [](Reader& reader) { reader.builder_.fail("it refers to an unknown entity"); });
    });
  }

  PropertyListReading read(std::string_view document) {
    // The document is parsed in one call: in parts, long tokens would be scanned again with each
    // part.
    const XML_Status status =
        XML_Parse(parser_.get(), document.data(), static_cast<int>(document.size()), XML_TRUE);
    if (exception_) std::rethrow_exception(exception_);
    if (status != XML_STATUS_OK && !builder_.hasFault()) {
      const XML_Error error = XML_GetErrorCode(parser_.get());
      if (error == XML_ERROR_NO_MEMORY) throw std::bad_alloc();
      return {Value(), std::string("it is malformed XML: ") + XML_ErrorString(error) + " in line " +
                           std::to_string(XML_GetCurrentLineNumber(parser_.get()))};
    }
    return builder_.finish();
  }

 private:
  enum class Kind { key, string, integer, real, date, data, booleanTrue, booleanFalse };

  struct Free {
    void operator()(XML_Parser parser) const noexcept { XML_ParserFree(parser); }
  };

  /// Handles an event, and stops the parser after a fault. Exceptions do not pass through the
  /// parser.
  template <class Work>
  static void handle(void* self, const Work& work) noexcept {
    Reader& reader = *static_cast<Reader*>(self);
    // The parser may report a few more events after it was told to stop.
    if (reader.isStopped_) return;
    try {
      work(reader);
    } catch (...) {
      reader.exception_ = std::current_exception();
    }
    reader.isStopped_ = reader.exception_ || reader.builder_.hasFault();
    if (reader.isStopped_) XML_StopParser(reader.parser_.get(), XML_FALSE);
  }

  void startElement(std::string_view name) {
    const bool isRoot = std::exchange(isAtRoot_, false);
    if (leaf_) return builder_.fail("it has an element where a text or number stands");
    if (name == "plist" && isRoot) return;
    if (name == "array") return builder_.openArray();
    if (name == "dict") return builder_.openDictionary();
    constexpr std::pair<std::string_view, Kind> leaves[] = {
        {"key", Kind::key},          {"string", Kind::string},     {"integer", Kind::integer},
        {"real", Kind::real},        {"date", Kind::date},         {"data", Kind::data},
        {"true", Kind::booleanTrue}, {"false", Kind::booleanFalse}};
    for (const auto& [leafName, kind] : leaves) {
      if (name != leafName) continue;
      leaf_ = kind;
      text_.clear();
      return;
    }
    builder_.fail("it has an element of unknown name");
  }

  void takeText(std::string_view text) {
    if (leaf_) {
      text_.append(text);
    } else if (!trimmed(text).empty()) {
      builder_.fail("it has text between its elements");
    }
  }

  void endElement() {
    if (leaf_) {
      endLeaf(*std::exchange(leaf_, std::nullopt));
    } else if (builder_.isInCollection()) {
      builder_.closeCollection();
    }
  }

  void endLeaf(Kind kind) {
    switch (kind) {
      case Kind::key:
        return builder_.setKey(NSString::stringWithUTF8(text_));
      case Kind::string:
        return builder_.add(NSString::stringWithUTF8(text_));
      case Kind::integer:
        return addUnlessNil(integerOf(text_), "it has an invalid integer, or one beyond 64 bits");
      case Kind::real:
        return addUnlessNil(realOf(text_), "it has an invalid real number, or one out of range");
      case Kind::date:
        return addUnlessNil(dateOf(text_), "it has an invalid date");
      case Kind::data:
        return addUnlessNil(dataOf(std::move(text_)), "it has data that is no base64");
      case Kind::booleanTrue:
      case Kind::booleanFalse:
        return addUnlessNil(trimmed(text_).empty() ? Value(kind == Kind::booleanTrue) : Value(),
                            "it has a boolean with a content");
    }
  }

  void addUnlessNil(Value value, const char* fault) {
    value.isNil() ? builder_.fail(fault) : builder_.add(std::move(value));
  }

  PropertyListBuilder builder_;
  std::unique_ptr<XML_ParserStruct, Free> parser_;
  bool isAtRoot_ = true;
  std::optional<Kind> leaf_;  ///< the element that is open, unless it is a collection
  std::string text_;          ///< its text so far
  bool isStopped_ = false;
  std::exception_ptr exception_;
};

}  // namespace

PropertyListReading readXMLPropertyList(std::string_view document, bool keepsMutable) {
  return Reader(keepsMutable).read(document);
}

}  // namespace zeb::detail
