#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Bench.h"

namespace zeb::bench {

/// One JSON library with one document: the text, prepared in the form that suits the library best,
/// and the tree after `keepTree()`.
class JsonLibrary {
 public:
  virtual ~JsonLibrary() = default;

  /// Parses the text and frees the tree.
  virtual void parse() = 0;
  /// Parses the text and keeps the tree for the functions below.
  virtual void keepTree() = 0;
  /// Scalars and containers in the tree, without keys; 0 if the text could not be read.
  virtual std::size_t countValues() = 0;
  /// Writes the tree compactly into new memory and frees that.
  virtual void write() = 0;
  virtual std::string written() = 0;
};

/// Makes a `JsonLibrary` of the parts that differ between libraries: the types `Text` and `Tree`,
/// `parse(text)`, `count(tree)`, `write(tree)` and `copy(written)`, which takes the result of
/// `write`.
template <class Particulars>
class JsonAdapter : public JsonLibrary {
 public:
  explicit JsonAdapter(std::string_view text) : text_(text) {}
  void parse() override { consume(particulars_.parse(text_)); }
  void keepTree() override { tree_ = particulars_.parse(text_); }
  std::size_t countValues() override { return particulars_.count(tree_); }
  void write() override { consume(particulars_.write(tree_)); }
  std::string written() override { return particulars_.copy(particulars_.write(tree_)); }

 protected:
  Particulars particulars_;
  typename Particulars::Text text_;
  typename Particulars::Tree tree_;
};

using MakeJsonLibrary = std::unique_ptr<JsonLibrary> (*)(std::string_view text);

template <class Library>
std::unique_ptr<JsonLibrary> makeJsonLibrary(std::string_view text) {
  return std::make_unique<Library>(text);
}

struct JsonPeer {
  const char* name;
  MakeJsonLibrary make;  ///< null when the library is not installed
};

std::vector<JsonPeer> jsonReaders();
std::vector<JsonPeer> jsonWriters();
/// The library whose tree in memory is compared with ours.
JsonPeer jsonTreeOwner();
/// Shorter strings fit into values of some libraries, so that keeping them needs no memory.
inline constexpr std::size_t minKeptStringBytes = 16;
/// One whose tree is the first string of a document with that many bytes.
JsonPeer jsonStringKeeper();
/// One whose trees are visited without counting references.
JsonPeer jsonUncountedReader();

std::unique_ptr<JsonLibrary> makeQtJson(std::string_view text);

}  // namespace zeb::bench
