#pragma once

#include <ZEBPlatform/Security/KeychainItem.h>
#include <ZEBPlatform/Security/SecBase.h>
#include <sqlite3.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <forward_list>
#include <span>
#include <string>
#include <string_view>

namespace zeb {

/// A set of attributes, one bit for each in the enumeration's order.
using KeychainAttributeMask = std::uint32_t;

constexpr KeychainAttributeMask maskOf(KeychainAttribute attribute) noexcept {
  return KeychainAttributeMask{1} << static_cast<unsigned>(attribute);
}

/// The name of the attribute's column.
const char* columnName(KeychainAttribute attribute) noexcept;
/// The table of the class.
const char* tableName(KeychainItemClass itemClass) noexcept;

/// The attributes that make up the identity of items of the class, in the order of the index, which
/// begins with those that select best.
std::span<const KeychainAttribute> identityAttributes(KeychainItemClass itemClass) noexcept;
KeychainAttributeMask identityMask(KeychainItemClass itemClass) noexcept;

/// The attributes of the mask whose values are the same if SQLite finds them equal. Numbers of
/// different kinds may be equal.
KeychainAttributeMask exactAttributes(KeychainAttributeMask mask) noexcept;

/// An item's attributes in the form of SQLite's values: borrowed from `KeychainAttributes`, or from
/// a row until its statement goes on. Text becomes TEXT, data BLOB, integers and booleans INTEGER,
/// other numbers and dates REAL. Absent attributes become NULL, and those of the identity the
/// integer 0, because a unique index takes NULLs as different.
class KeychainColumns {
 public:
  KeychainColumns() = default;
  KeychainColumns(const KeychainColumns&) = delete;
  KeychainColumns& operator=(const KeychainColumns&) = delete;

  /// `errSecParam` if an attribute has a value of the wrong kind, one that is too long, or a
  /// number or date whose value is not-a-number (NaN).
  OSStatus take(const KeychainAttributes& attributes);
  /// Reads a row that met the condition: the columns from `first` on are the attributes of
  /// `selected` in the enumeration's order, and the exact attributes of the condition are the row's
  /// own. `errSecDecode` if a column has a kind that it cannot have.
  OSStatus takeRow(sqlite3_stmt* statement, int first, KeychainAttributeMask selected,
                   const KeychainColumns& condition);
  /// Replaces the attributes that are present in `changes`, borrowed from it.
  void overlay(const KeychainColumns& changes);

  KeychainAttributeMask present() const noexcept { return present_; }
  /// Binds the attributes of the mask to the parameters from `parameter` on, which becomes the
  /// number of the parameter that follows. Returns SQLite's result; a statement whose parameters
  /// are not all bound must not run, because it would take NULL for the missing ones.
  int bind(sqlite3_stmt* statement, int& parameter, KeychainAttributeMask mask,
           KeychainItemClass itemClass) const noexcept;
  /// What is sealed together with the value: the class and the identity, unambiguously.
  std::string identity(KeychainItemClass itemClass) const;
  /// Sets the attributes that are not in `known`.
  void copyTo(KeychainAttributes& attributes, KeychainAttributeMask known) const;

 private:
  enum class Form : std::uint8_t { absent, text, data, integer, real };
  struct Column {
    Form form = Form::absent;
    union {
      std::int64_t integer = 0;
      double real;  ///< if the form says so
    };
    std::string_view bytes;
  };

  OSStatus takeValue(KeychainAttribute attribute, const Value& value);
  static bool takeColumn(KeychainAttribute attribute, sqlite3_value* value,
                         Column& column) noexcept;
  static int bindColumn(sqlite3_stmt* statement, int parameter, const Column& column) noexcept;
  void set(KeychainAttribute attribute, const Column& column) noexcept;

  std::array<Column, keychainAttributeCount> columns_;
  KeychainAttributeMask present_ = 0;
  std::forward_list<std::string> converted_;  ///< texts that were not stored as UTF-8
};

}  // namespace zeb
