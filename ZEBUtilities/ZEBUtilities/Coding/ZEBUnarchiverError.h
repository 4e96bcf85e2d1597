#pragma once

#include <ZEBPlatform/Foundation/NSString.h>

#include <cstdint>
#include <exception>
#include <string>

namespace zeb {

/// The reason why an archive document cannot be read.
class ZEBUnarchiverError : public std::exception {
 public:
  enum class Case : std::uint8_t {
    /// A typed read found a value of another kind under the key.
    unexpectedDataType,
    /// The value under the key is neither a plain value nor a dictionary, or has an invalid
    /// component, or is an unknown enumeration value, or its builder returned nil, or it is nested
    /// too deeply for the thread's stack. For an unknown type name, the type name deliberately
    /// takes the place of the key.
    unexpectedContent,
    /// The dictionary under the key should be an object but has no encodable name.
    missingEncodableName,
    /// The registry has no builder for the encodable name.
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
  /// The payload of the first three cases and of `missingRequiredData`; nil for other cases.
  NSString key() const;
  /// The payload of `missingDecodingBuilder`; nil for other cases.
  NSString encodableName() const;

  /// The path of keys to the error's place ("root.author.links[2]"); empty for errors made outside
  /// of a decoder.
  const std::string& path() const noexcept { return path_; }
  void setPath(std::string path);

  /// Case, payload and path, as UTF-8.
  const char* what() const noexcept override { return text_.c_str(); }

  /// Compares case and payload, not the path.
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
