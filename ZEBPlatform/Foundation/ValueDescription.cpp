#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSNumber.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/NSURL.h>
#include <ZEBPlatform/Foundation/detail/NumberText.h>
#include <ZEBPlatform/Foundation/detail/TreeWalk.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <string>

namespace zeb {

namespace {

constexpr std::size_t maxPrintedLevels = 512;
/// Limits the size of the text of a deep tree.
constexpr std::size_t maxIndentedLevels = 32;

std::string describeNumber(const Value& number) {
  switch (number.kind()) {
    case ValueKind::UnsignedInteger:
      return std::to_string(number.payload());
    case ValueKind::Float:
      return detail::shortestText(number.floatValue());
    case ValueKind::Double:
      return detail::shortestText(number.doubleValue());
    default:
      return std::to_string(number.longLongValue());
  }
}

std::string describeDate(const NSDate& date) {
  using namespace std::chrono;
  const double seconds = std::floor(date.timeIntervalSince1970());
  constexpr double maxSeconds = 9.0e11;  // the calendar below holds the years up to this
  if (!(std::fabs(seconds) < maxSeconds)) {
    return detail::shortestText(date.timeIntervalSinceReferenceDate()) + " s since 2001-01-01";
  }
  const sys_seconds moment{std::chrono::seconds(static_cast<std::int64_t>(seconds))};
  const sys_days day = floor<days>(moment);
  const year_month_day calendar(day);
  const hh_mm_ss clock(moment - day);
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02u-%02u %02d:%02d:%02d +0000",
                static_cast<int>(calendar.year()), static_cast<unsigned>(calendar.month()),
                static_cast<unsigned>(calendar.day()), static_cast<int>(clock.hours().count()),
                static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()));
  return text;
}

std::string describeData(const NSData& data) {
  constexpr std::size_t maxShownBytes = 24;
  constexpr char digits[] = "0123456789abcdef";
  std::string text = "{length = " + std::to_string(data.length()) + ", bytes = 0x";
  for (const std::byte byte : data.bytes().first(std::min(maxShownBytes, data.length()))) {
    text += digits[std::to_integer<unsigned>(byte) >> 4];
    text += digits[std::to_integer<unsigned>(byte) & 0xF];
  }
  return text + (data.length() > maxShownBytes ? " ...}" : "}");
}

std::string describeLeaf(const Value& value) {
  switch (value.kind()) {
    case ValueKind::Nil:
      return "(null)";
    case ValueKind::Null:
      return "<null>";
    case ValueKind::String:
      return NSString(value).utf8();
    case ValueKind::URL:
      return NSURL(value).absoluteString().utf8();
    case ValueKind::Date:
      return describeDate(NSDate(value));
    case ValueKind::Data:
      return describeData(NSData(value));
    case ValueKind::Object:
      return value.objectPointer()->description();
    case ValueKind::Array:
    case ValueKind::Dictionary:
    case ValueKind::Set:
    case ValueKind::OrderedSet:
      return "{…}";  // a collection that is a key
    default:
      return describeNumber(value);
  }
}

class DescriptionPrinter {
 public:
  std::string text;

  bool enter(const Value& collection, std::size_t depth) {
    if (depth >= maxPrintedLevels) {
      text += "…";
      hasContent_ = true;
      return false;
    }
    indentation_ = depth + 1;
    text += opening(collection);
    hasContent_ = false;
    return true;
  }

  void leave(const Value& collection, std::size_t depth) {
    if (collection.isDictionary() && hasContent_) text += ';';
    indentation_ = depth;
    newLine();
    text += closing(collection);
    hasContent_ = true;
  }

  void element(std::size_t position) {
    if (position) text += ',';
    newLine();
  }

  void key(const Value& key, std::size_t position) {
    if (position) text += ';';
    newLine();
    appendLeaf(key);
    text += " = ";
  }

  void leaf(const Value& value) {
    appendLeaf(value);
    hasContent_ = true;
  }

 private:
  static const char* opening(const Value& collection) {
    return collection.isArray() ? "(" : collection.isDictionary() ? "{" : "{(";
  }
  static const char* closing(const Value& collection) {
    return collection.isArray() ? ")" : collection.isDictionary() ? "}" : ")}";
  }

  void newLine() {
    text += '\n';
    text.append(4 * std::min(indentation_, maxIndentedLevels), ' ');
  }

  void appendLeaf(const Value& value) {
    if (indentation_ && value.isString()) {
      text += '"' + NSString(value).utf8() + '"';
    } else {
      text += describeLeaf(value);
    }
  }

  std::size_t indentation_ = 0;
  bool hasContent_ = false;  ///< whether the current collection has printed anything
};

}  // namespace

NSString Value::description() const {
  DescriptionPrinter printer;
  detail::walkTree(*this, printer);
  return NSString(std::string_view(printer.text));
}

}  // namespace zeb
