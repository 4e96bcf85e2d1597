#pragma once

#include <ZEBPlatform/Foundation/NSString.h>

#include <cstdint>
#include <exception>
#include <string>

namespace zeb {

/// Why an archive document can't be read.
class ZEBUnarchiverError : public std::exception {
 public:
  enum class Case : std::uint8_t {
    /// A typed read found a value of another kind under the key.
    unexpectedDataType,
    /// A value that is neither plain nor a dictionary, a component that makes no sense, an enumeration value
    /// that names no case, an object that its builder made nothing of, or nesting that the stack can't bear,
    /// under the key; for an unknown type name, deliberately, the type name
    /// stands in place of the key.
    unexpectedContent,
    /// The dictionary under the key should be an object but names no encodable.
    missingEncodableName,
    /// The registry knows no builder for the encodable name.
    missingDecodingBuilder,
    /// A required read found nothing under the key.
    missingRequiredData,
    /// The document is no dictionary.
    unexpectedRootDataType,
    /// The root is not of the expected type.
    missingRootObject,
  };

  static ZEBUnarchiverError unexpectedDataType(const NSString& key);
  static ZEBUnarchiverError unexpectedContent(const NSString& key);
  static ZEBUnarchiverError missingEncodableName(const NSString& key);
  static ZEBUnarchiverError missingDecodingBuilder(const NSString& encodableName);
  static ZEBUnarchiverError missingRequiredData(const NSString& key);
  static ZEBUnarchiverError unexpectedRootDataType();
  static ZEBUnarchiverError missingRootObject();

  Case errorCase() const noexcept { return case_; }
  /// The payload of the first three cases and of `missingRequiredData`; else nil.
  NSString key() const;
  /// The payload of `missingDecodingBuilder`; else nil.
  NSString encodableName() const;

  /// Where the reader was, as the keys that led there ("root.author.links[2]"); empty outside a read.
  const std::string& path() const noexcept { return path_; }
  void setPath(std::string path);

  /// Case, payload and path, as UTF-8.
  const char* what() const noexcept override { return text_.c_str(); }

  /// Same case and payload, wherever it happened.
  friend bool operator==(const ZEBUnarchiverError& left, const ZEBUnarchiverError& right) noexcept {
    return left.case_ == right.case_ && left.payload_ == right.payload_;
  }

 private:
  ZEBUnarchiverError(Case errorCase, const NSString& payload);

  Case case_;
  NSString payload_;
  std::string path_;
  std::string text_;
};

}  // namespace zeb
