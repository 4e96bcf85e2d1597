#include <Bundle/NSPropertyListSerialization.h>
#include <Bundle/PropertyListGuardPrivate.h>
#include <Foundation/NSArray.h>
#include <Foundation/NSDate.h>
#include <Foundation/NSDictionary.h>
#include <Foundation/TreeRebuild.h>
#include <Linux/NumericLocale.h>

#include <plist/plist.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace zeb {

namespace {

struct FreeNode {
  using pointer = plist_t;
  void operator()(plist_t node) const noexcept { plist_free(node); }
};
using Tree = std::unique_ptr<void, FreeNode>;

struct FreeMemory {
  void operator()(void* memory) const noexcept { std::free(memory); }
};
using Memory = std::unique_ptr<void, FreeMemory>;

/// How the library writes a single number or date: exact, where asking for the value is not.
std::string writtenForm(plist_t node) {
  char* document = nullptr;
  std::uint32_t length = 0;
  plist_to_xml(node, &document, &length);
  if (!document) return {};
  std::string text(document, length);
  plist_to_xml_free(document);
  for (const char* tag : {"<integer>", "<date>"}) {
    const std::size_t begin = text.find(tag);
    if (begin == std::string::npos) continue;
    text.erase(0, begin + std::string_view(tag).size());
    text.resize(std::min(text.find('<'), text.size()));
    return text;
  }
  return {};
}

Value integerOf(plist_t node) {
  std::uint64_t bits = 0;
  plist_get_uint_val(node, &bits);
  const auto number = static_cast<std::int64_t>(bits);
  // Negative numbers and those beyond the signed ones have the same bits.
  if (number < 0 && !writtenForm(node).starts_with('-')) return bits;
  return number;
}

Value dateOf(plist_t node) {
  using Seconds = std::numeric_limits<std::int32_t>;
  std::int32_t seconds = 0;
  std::int32_t microseconds = 0;
  plist_get_date_val(node, &seconds, &microseconds);
  if (seconds != Seconds::min() && seconds != Seconds::max()) {
    return NSDate::dateWithTimeIntervalSinceReferenceDate(seconds + microseconds * 1e-6);
  }
  // Out of these 32 bits' range: year-month-dayThour:minute:secondZ.
  const std::string text = writtenForm(node);
  int parts[6] = {};
  const char* place = text.data();
  for (int& part : parts) {
    place = std::from_chars(place, text.data() + text.size(), part).ptr + 1;
    if (place > text.data() + text.size()) return nullptr;
  }
  const auto [year, month, day, hour, minute, second] = parts;
  const std::chrono::sys_days midnight = std::chrono::year(year) / month / day;
  const auto days = static_cast<double>(midnight.time_since_epoch().count());
  return NSDate::dateWithTimeIntervalSince1970(days * 86400 + hour * 3600 + minute * 60 + second);
}

/// What stands for a node that is no container; nil for one that can't be read.
Value leafOf(plist_t node) {
  std::uint64_t length = 0;
  switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
      std::uint8_t boolean = 0;
      plist_get_bool_val(node, &boolean);
      return boolean != 0;
    }
    case PLIST_UINT:
      return integerOf(node);
    case PLIST_REAL: {
      double number = 0;
      plist_get_real_val(node, &number);
      return number;
    }
    case PLIST_STRING: {
      const char* text = plist_get_string_ptr(node, &length);
      return text ? Value(std::string_view(text, length)) : Value();
    }
    case PLIST_DATA: {
      const char* bytes = plist_get_data_ptr(node, &length);
      return NSData::dataWithBytes(bytes ? std::string_view(bytes, length) : std::string_view());
    }
    case PLIST_DATE:
      return dateOf(node);
    case PLIST_UID: {
      std::uint64_t number = 0;
      plist_get_uid_val(node, &number);
      return NSDictionary{{"CF$UID", number}};
    }
    default:
      return nullptr;
  }
}

/// Builds the value tree; the guards have limited its depth and size.
class Conversion {
 public:
  explicit Conversion(bool keepsMutable) noexcept : keepsMutable_(keepsMutable) {}

  /// Nil when some node can't be read.
  Value valueOf(plist_t node) {
    switch (plist_get_node_type(node)) {
      case PLIST_ARRAY:
        return arrayOf(node);
      case PLIST_DICT:
        return dictionaryOf(node);
      default:
        return leafOf(node);
    }
  }

 private:
  Value arrayOf(plist_t node) {
    NSMutableArray array;
    plist_array_iter begun = nullptr;
    plist_array_new_iter(node, &begun);
    const Memory iterator(begun);
    for (;;) {
      plist_t item = nullptr;
      plist_array_next_item(node, begun, &item);
      if (!item) return finished(array);
      Value element = valueOf(item);
      if (element.isNil()) return nullptr;
      array.addObject(std::move(element));
    }
  }

  Value dictionaryOf(plist_t node) {
    NSMutableDictionary dictionary;
    plist_dict_iter begun = nullptr;
    plist_dict_new_iter(node, &begun);
    const Memory iterator(begun);
    for (;;) {
      char* name = nullptr;
      plist_t item = nullptr;
      plist_dict_next_item(node, begun, &name, &item);
      const Memory nameOwner(name);
      if (!item) return finished(dictionary);
      Value value = valueOf(item);
      if (value.isNil() || !name) return nullptr;
      dictionary.setObject(std::move(value), name);
    }
  }

  Value finished(Value collection) const {
    return keepsMutable_ ? collection : detail::frozen(std::move(collection));
  }

  const bool keepsMutable_;
};

Value readPropertyList(std::string_view document, std::uint64_t options,
                       NSPropertyListFormat& format, const char*& fault) {
  if (document.size() > NSPropertyListMaximumSize) {
    fault = "it is larger than 16 MiB";
    return nullptr;
  }
  const bool isBinary = document.starts_with("bplist00");
  format = isBinary ? NSPropertyListBinaryFormat_v1_0 : NSPropertyListXMLFormat_v1_0;
  if (document.starts_with("\xEF\xBB\xBF")) document.remove_prefix(3);
  fault = isBinary ? detail::faultOfBinaryPropertyList(document)
                   : detail::faultOfXMLPropertyList(document);
  if (fault) return nullptr;

  const NeutralNumbers neutral;
  plist_t root = nullptr;
  const auto length = static_cast<std::uint32_t>(document.size());
  (isBinary ? plist_from_bin : plist_from_xml)(document.data(), length, &root);
  const Tree tree(root);
  fault = "it is malformed";
  if (!tree) return nullptr;
  return Conversion(options & NSPropertyListMutableContainers).valueOf(root);
}

}  // namespace

Value NSPropertyListSerialization::propertyListWithData(const NSData& data, std::uint64_t options,
                                                        NSPropertyListFormat* format,
                                                        NSError* error) {
  NSPropertyListFormat found{};
  const char* fault = nullptr;
  const Value value = readPropertyList(data.view(), options, found, fault);
  if (!value.isNil()) {
    if (format) *format = found;
  } else if (error) {
    *error = NSError(NSCocoaErrorDomain, NSPropertyListReadCorruptError,
                     {{NSString(NSLocalizedDescriptionKey),
                       NSString::stringWithFormat("The property list can't be read: %s.", fault)}});
  }
  return value;
}

}  // namespace zeb
