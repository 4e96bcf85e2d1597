#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/detail/TreeRebuild.h>
#include <ZEBPlatform/Json/JsonTextWriter.h>
#include <ZEBPlatform/Json/NSJSONSerialization.h>
#include <ZEBPlatform/Json/detail/JsonLimits.h>
#include <ZEBPlatform/Json/detail/JsonWriter.h>

#include <algorithm>
#include <vector>

namespace zeb::detail {

namespace {

/// Visits a tree and writes it. Every value is written together with a comma, which the end of its
/// collection replaces, so that each value checks the remaining space only once.
class DocumentWriter {
 public:
  explicit DocumentWriter(std::uint64_t options)
      : pretty_(options & NSJSONWritingPrettyPrinted),
        text_(!(options & NSJSONWritingWithoutEscapingSlashes)) {}

  NSData finish() {
    text_.output().truncate(text_.size() - 1);
    return text_.finish();
  }

  bool enter(const Value& collection, std::size_t depth) {
    if (collection.isSet() || collection.isOrderedSet()) raiseUnwritable(collection);
    if (depth >= maxJsonNesting) throw nestingError();
    text_.put(collection.isArray() ? '[' : '{');
    indentation_ = depth + 1;
    return true;
  }

  void leave(const Value& collection, std::size_t depth) {
    indentation_ = depth;
    const bool isEmpty = text_.output().last() != ',';
    if (!isEmpty) text_.output().truncate(text_.size() - 1);
    if (pretty_ && !isEmpty) newLine();
    text_.put(collection.isArray() ? std::string_view("],") : std::string_view("},"));
  }

  void element(std::size_t) {
    if (pretty_) newLine();
  }

  void key(const Value& key, std::size_t) {
    if (!key.isString()) {
      raiseInvalidArgument(NSString::stringWithFormat("JSON keys must be strings: %@", key));
    }
    const auto& text = *key.storageAs<StringStorage>();
    if (!pretty_) return text_.writeString(text, ':');
    newLine();
    text_.writeString(text, ' ');
    text_.put(": ");
  }

  [[gnu::always_inline]] void leaf(const Value& value) {
    if (value.isString()) return text_.writeString(*value.storageAs<StringStorage>(), ',');
    if (!value.isNumber() && !value.isNull()) raiseUnwritable(value);
    if (!JsonTextWriter::isFinite(value)) {
      raiseInvalidArgument(NSString::stringWithFormat("JSON has no number %@", value));
    }
    text_.writeScalar(value, ',');
  }

 private:
  [[noreturn]] static void raiseUnwritable(const Value& value) {
    raiseInvalidArgument(NSString::stringWithFormat("JSON has no such value: %@", value));
  }

  void newLine() {
    text_.put('\n');
    // Without a limit, indentation would make a deep document grow with the square of its depth.
    constexpr std::size_t maxIndentation = 32;
    const std::size_t levels = std::min(indentation_, maxIndentation);
    for (std::size_t level = 0; level < levels; ++level) text_.put("  ");
  }

  const bool pretty_;
  JsonTextWriter text_;
  std::size_t indentation_ = 0;
};

/// Sorts the entries of dictionaries by their keys. Keys that are no strings may end up in any
/// order: the writer refuses them anyway.
struct SortedKeysRules : TreeRules {
  static bool keeps(const Value&, std::size_t depth) {
    if (depth >= maxJsonNesting) throw nestingError();
    return true;
  }
  static Value finished(Value collection) {
    if (!collection.isDictionary()) return frozen(std::move(collection));
    std::vector<DictionaryEntry> entries;
    for (const DictionaryEntry& entry : NSDictionary(collection)) entries.push_back(entry);
    std::sort(entries.begin(), entries.end(),
              [](const DictionaryEntry& left, const DictionaryEntry& right) {
                return NSString(left.key) < NSString(right.key);
              });
    return NSDictionary::dictionaryWithEntries(entries);
  }
};

}  // namespace

NSError nestingError() {
  static constexpr auto description = joinedText(jsonNestingFault.characters, ".");
  return NSError(NSCocoaErrorDomain, NSPropertyListWriteInvalidError,
                 {{NSLocalizedDescriptionKey, description.c_str()}});
}

NSData writeJson(const Value& root, std::uint64_t options) {
  const bool isCollection = root.isArray() || root.isDictionary();
  if (!isCollection && !(options & NSJSONWritingFragmentsAllowed)) {
    raiseInvalidArgument("The root of a JSON document must be an array or a dictionary");
  }
  DocumentWriter writer(options);
  if (options & NSJSONWritingSortedKeys) {
    walkTree(rebuildTree(root, SortedKeysRules()), writer);
  } else {
    walkTree(root, writer);
  }
  return writer.finish();
}

}  // namespace zeb::detail
