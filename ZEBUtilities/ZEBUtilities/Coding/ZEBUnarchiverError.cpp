#include <ZEBUtilities/Coding/ZEBUnarchiverError.h>

#include <string_view>
#include <utility>

namespace zeb {

namespace {

using Case = ZEBUnarchiverError::Case;

std::string_view nameOf(Case errorCase) noexcept {
  switch (errorCase) {
    case Case::unexpectedDataType:
      return "unexpectedDataType";
    case Case::unexpectedContent:
      return "unexpectedContent";
    case Case::missingEncodableName:
      return "missingEncodableName";
    case Case::missingDecodingBuilder:
      return "missingDecodingBuilder";
    case Case::missingRequiredData:
      return "missingRequiredData";
    case Case::unexpectedRootDataType:
      return "unexpectedRootDataType";
    case Case::missingRootObject:
      return "missingRootObject";
  }
  return "";
}

}  // namespace

ZEBUnarchiverError::ZEBUnarchiverError(Case errorCase, const NSString& payload)
    : case_(errorCase), payload_(payload) {
  setPath({});
}

ZEBUnarchiverError ZEBUnarchiverError::unexpectedDataType(const NSString& key) {
  return {Case::unexpectedDataType, key};
}
ZEBUnarchiverError ZEBUnarchiverError::unexpectedContent(const NSString& key) {
  return {Case::unexpectedContent, key};
}
ZEBUnarchiverError ZEBUnarchiverError::missingEncodableName(const NSString& key) {
  return {Case::missingEncodableName, key};
}
ZEBUnarchiverError ZEBUnarchiverError::missingDecodingBuilder(const NSString& encodableName) {
  return {Case::missingDecodingBuilder, encodableName};
}
ZEBUnarchiverError ZEBUnarchiverError::missingRequiredData(const NSString& key) {
  return {Case::missingRequiredData, key};
}
ZEBUnarchiverError ZEBUnarchiverError::unexpectedRootDataType() {
  return {Case::unexpectedRootDataType, nullptr};
}
ZEBUnarchiverError ZEBUnarchiverError::missingRootObject() {
  return {Case::missingRootObject, nullptr};
}

NSString ZEBUnarchiverError::key() const {
  return case_ == Case::missingDecodingBuilder ? NSString() : payload_;
}

NSString ZEBUnarchiverError::encodableName() const {
  return case_ == Case::missingDecodingBuilder ? payload_ : NSString();
}

void ZEBUnarchiverError::setPath(std::string path) {
  path_ = std::move(path);
  text_ = nameOf(case_);
  if (!payload_.isNil()) {
    const bool isName = case_ == Case::missingDecodingBuilder;
    text_ += (isName ? "(encodableName: \"" : "(key: \"") + payload_.utf8() + "\")";
  }
  if (!path_.empty()) text_ += " at " + path_;
}

}  // namespace zeb
