#include "JsonBench.h"

#if ZEB_BENCH_HAVE_BOOST_JSON
#include <boost/json/src.hpp>  // compiles the library in here
#endif
#if ZEB_BENCH_HAVE_NLOHMANN_JSON
#include <nlohmann/json.hpp>
#endif
#if ZEB_BENCH_HAVE_RAPIDJSON
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#endif
#if ZEB_BENCH_HAVE_SIMDJSON
#include <simdjson.h>
#endif

namespace zeb::bench {

namespace {

#if ZEB_BENCH_HAVE_BOOST_JSON
struct Boost {
  using Text = std::string;
  using Tree = boost::json::value;
  Tree parse(const Text& text) { return boost::json::parse(text); }
  std::size_t count(const Tree& tree) {
    std::size_t result = 1;
    if (const auto* array = tree.if_array()) {
      for (const auto& element : *array) result += count(element);
    } else if (const auto* object = tree.if_object()) {
      for (const auto& member : *object) result += count(member.value());
    }
    return result;
  }
  std::string write(const Tree& tree) { return boost::json::serialize(tree); }
  std::string copy(std::string written) { return written; }
};

struct MonotonicBoost final : JsonAdapter<Boost> {
  using JsonAdapter::JsonAdapter;
  void parse() override {
    boost::json::monotonic_resource memory;
    consume(boost::json::parse(text_, &memory));
  }
};

struct StringOfBoost : Boost {
  Tree parse(const Text& text) { return firstString(Boost::parse(text)); }
  std::size_t count(const Tree& tree) { return tree.is_string() ? 1 : 0; }
  Tree firstString(const Tree& tree) {
    Tree found;
    if (const auto* text = tree.if_string(); text && text->size() >= minKeptStringBytes)
      return tree;
    if (const auto* array = tree.if_array()) {
      for (auto at = array->begin(); at != array->end() && !found.is_string(); ++at) {
        found = firstString(*at);
      }
    } else if (const auto* object = tree.if_object()) {
      for (auto at = object->begin(); at != object->end() && !found.is_string(); ++at) {
        found = firstString(at->value());
      }
    }
    return found;
  }
};

constexpr MakeJsonLibrary makeBoost = makeJsonLibrary<JsonAdapter<Boost>>;
constexpr MakeJsonLibrary makeStringOfBoost = makeJsonLibrary<JsonAdapter<StringOfBoost>>;
constexpr MakeJsonLibrary makeMonotonicBoost = makeJsonLibrary<MonotonicBoost>;
#else
constexpr MakeJsonLibrary makeBoost = nullptr;
constexpr MakeJsonLibrary makeStringOfBoost = nullptr;
constexpr MakeJsonLibrary makeMonotonicBoost = nullptr;
#endif

#if ZEB_BENCH_HAVE_NLOHMANN_JSON
struct Nlohmann {
  using Text = std::string;
  using Tree = nlohmann::json;
  Tree parse(const Text& text) { return Tree::parse(text); }
  std::size_t count(const Tree& tree) {
    std::size_t result = 1;
    if (tree.is_structured()) {
      for (const auto& element : tree) result += count(element);
    }
    return result;
  }
  std::string write(const Tree& tree) { return tree.dump(); }
  std::string copy(std::string written) { return written; }
};

constexpr MakeJsonLibrary makeNlohmann = makeJsonLibrary<JsonAdapter<Nlohmann>>;
#else
constexpr MakeJsonLibrary makeNlohmann = nullptr;
#endif

#if ZEB_BENCH_HAVE_RAPIDJSON
struct Rapid {
  using Text = std::string;
  using Tree = rapidjson::Document;
  Tree parse(const Text& text) {
    Tree tree;
    tree.Parse<rapidjson::kParseValidateEncodingFlag>(text.data(), text.size());
    return tree;
  }
  std::size_t count(const rapidjson::Value& tree) {
    std::size_t result = 1;
    if (tree.IsArray()) {
      for (const auto& element : tree.GetArray()) result += count(element);
    } else if (tree.IsObject()) {
      for (const auto& member : tree.GetObject()) result += count(member.value);
    }
    return result;
  }
  rapidjson::StringBuffer write(const Tree& tree) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    tree.Accept(writer);
    return buffer;
  }
  std::string copy(const rapidjson::StringBuffer& written) {
    return {written.GetString(), written.GetSize()};
  }
};

constexpr MakeJsonLibrary makeRapid = makeJsonLibrary<JsonAdapter<Rapid>>;
#else
constexpr MakeJsonLibrary makeRapid = nullptr;
#endif

#if ZEB_BENCH_HAVE_SIMDJSON
struct Simdjson {
  using Text = simdjson::padded_string;
  using Tree = simdjson::dom::element;
  Tree parse(const Text& text) { return parser.parse(text).value(); }
  std::size_t count(Tree tree) {
    std::size_t result = 1;
    simdjson::dom::array array;
    simdjson::dom::object object;
    if (tree.get(array) == simdjson::SUCCESS) {
      for (const Tree element : array) result += count(element);
    } else if (tree.get(object) == simdjson::SUCCESS) {
      for (const auto& member : object) result += count(member.value);
    }
    return result;
  }
  std::string write(Tree tree) { return simdjson::minify(tree); }
  std::string copy(std::string written) { return written; }

  simdjson::dom::parser parser;
};

struct FreshSimdjson final : JsonAdapter<Simdjson> {
  using JsonAdapter::JsonAdapter;
  void parse() override {
    simdjson::dom::parser parser;
    consume(parser.parse(text_).value());
  }
};

constexpr MakeJsonLibrary makeSimdjson = makeJsonLibrary<JsonAdapter<Simdjson>>;
constexpr MakeJsonLibrary makeFreshSimdjson = makeJsonLibrary<FreshSimdjson>;
#else
constexpr MakeJsonLibrary makeSimdjson = nullptr;
constexpr MakeJsonLibrary makeFreshSimdjson = nullptr;
#endif

#if ZEB_BENCH_HAVE_QT
constexpr MakeJsonLibrary makeQt = makeQtJson;
#else
constexpr MakeJsonLibrary makeQt = nullptr;
#endif

}  // namespace

std::vector<JsonPeer> jsonReaders() {
  return {{"simdjson, parser reused", makeSimdjson},
          {"simdjson, parser fresh", makeFreshSimdjson},
          {"Boost.JSON, monotonic", makeMonotonicBoost},
          {"Boost.JSON", makeBoost},
          {"RapidJSON, validating", makeRapid},
          {"Qt", makeQt},
          {"nlohmann/json", makeNlohmann}};
}

std::vector<JsonPeer> jsonWriters() {
  return {{"Boost.JSON", makeBoost},
          {"RapidJSON", makeRapid},
          {"simdjson, minify", makeSimdjson},
          {"nlohmann/json", makeNlohmann},
          {"Qt", makeQt}};
}

JsonPeer jsonTreeOwner() { return {"Boost.JSON", makeBoost}; }
JsonPeer jsonStringKeeper() { return {"Boost.JSON, copied string", makeStringOfBoost}; }
JsonPeer jsonUncountedReader() { return {"simdjson", makeSimdjson}; }

}  // namespace zeb::bench
