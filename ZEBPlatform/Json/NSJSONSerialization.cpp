#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/detail/TreeRebuild.h>
#include <ZEBPlatform/Json/JsonTextPrivate.h>
#include <ZEBPlatform/Json/NSJSONSerialization.h>
#include <ZEBPlatform/Json/detail/JsonReader.h>
#include <ZEBPlatform/Json/detail/JsonWriter.h>

namespace zeb {

const char* const NSJSONSerializationErrorIndexKey = "NSJSONSerializationErrorIndex";

namespace {

NSError readingError(const char* message, const detail::JsonText::Position& position) {
  return NSError(
      NSCocoaErrorDomain, NSPropertyListReadCorruptError,
      {{NSLocalizedDescriptionKey,
        NSString::stringWithFormat("%s at line %tu, column %tu (byte offset %tu).", message,
                                   position.line, position.column, position.byteOffset)},
       {NSJSONSerializationErrorIndexKey, std::uint64_t{position.byteOffset}}});
}

struct MutableTreeRules : detail::TreeRules {
  bool collections;
  bool leaves;

  Value leaf(const Value& value) const {
    return leaves ? value.mutableCopy() : value.detachedCopy();
  }
  Value finished(Value collection) const {
    return collections ? std::move(collection) : detail::frozen(std::move(collection));
  }
};

}  // namespace

Value NSJSONSerialization::JSONObjectWithData(const NSData& data, std::uint64_t options,
                                              NSError* error) {
  const detail::JsonText text(data.view());
  detail::JsonReading reading =
      detail::readJson(text.utf8(), options & NSJSONReadingFragmentsAllowed);
  const bool isMalformed = text.malformedAt() != std::string_view::npos;
  if (isMalformed && (!reading.fault.message || reading.fault.isEndOfText)) {
    reading.fault = {"Malformed UTF-16 or UTF-32", text.utf8().size()};
  }
  if (reading.fault.message) {
    if (error) *error = readingError(reading.fault.message, text.positionOf(reading.fault.offset));
    return {};
  }
  MutableTreeRules rules;
  rules.collections = options & NSJSONReadingMutableContainers;
  rules.leaves = options & NSJSONReadingMutableLeaves;
  const bool isMutable = rules.collections || rules.leaves;
  return isMutable ? detail::rebuildTree(reading.value, rules) : std::move(reading.value);
}

NSData NSJSONSerialization::dataWithJSONObject(const Value& object, std::uint64_t options,
                                               NSError* error) {
  try {
    return detail::writeJson(object, options);
  } catch (const NSError& tooDeep) {
    if (error) *error = tooDeep;
    return nullptr;
  }
}

bool NSJSONSerialization::isValidJSONObject(const Value& object) {
  try {
    return !dataWithJSONObject(object, 0).isNil();
  } catch (const NSException&) {
    return false;
  }
}

}  // namespace zeb
