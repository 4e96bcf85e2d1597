#include "Documents.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

namespace zeb::bench {

namespace {

std::vector<Document> readDocuments(const std::filesystem::path& folder) {
  std::vector<Document> result;
  std::error_code noFolder;
  for (const auto& entry : std::filesystem::directory_iterator(folder, noFolder)) {
    if (entry.path().extension() != ".json") continue;
    std::ifstream file(entry.path(), std::ios::binary);
    result.push_back(
        {entry.path().stem().string(), std::string(std::istreambuf_iterator<char>(file), {})});
  }
  std::sort(result.begin(), result.end(),
            [](const Document& left, const Document& right) { return left.name < right.name; });
  return result;
}

/// Makes the same documents in every run.
class Maker {
 public:
  std::vector<Document> make() {
    return {{"numbers", array(8000, [this] { return decimal() + "," + integer(100'000'000); })},
            {"strings", array(2000, [this] { return quoted(sentence(latin)); })},
            {"records", array(500, [this] { return record(3); })},
            {"languages", array(2000, [this] { return quoted(sentence(languages)); })}};
  }

 private:
  using Words = std::vector<const char*>;
  const Words latin = {"timeline",
                       "answer",
                       "read",
                       "a",
                       "status",
                       "of",
                       "follower",
                       "media",
                       "\\\"so\\\"",
                       "line\\n",
                       "the",
                       "updated",
                       "https://example.org/"};
  const Words languages = {"Grüße", "日本語",          "привет", "नमस्ते",
                           "שלום",  "\\u00e9t\\u00e9", "😀",     "and"};

  std::size_t below(std::size_t limit) { return random_() % limit; }
  std::string integer(std::size_t limit) { return std::to_string(below(limit)); }
  std::string decimal() {
    char text[32];
    std::snprintf(text, sizeof text, "%.15g",
                  static_cast<double>(below(1u << 31)) / 11930464.7 - 90);
    return text;
  }
  std::string quoted(const std::string& text) { return '"' + text + '"'; }
  std::string sentence(const Words& words) {
    std::string result = words[below(words.size())];
    for (std::size_t more = below(24); more > 0; --more) {
      result += ' ';
      result += words[below(words.size())];
    }
    return result;
  }
  std::string record(int levels) {
    std::string result =
        "{\"id\":" + integer(1'000'000'000) + ",\"name\":" + quoted(sentence(latin)) +
        ",\"protected\":" + (below(2) ? "true" : "false") + ",\"score\":" + decimal() +
        ",\"place\":null,\"tags\":" + array(below(5), [this] { return quoted("tag"); });
    if (levels > 0) result += ",\"author\":" + record(levels - 1);
    return result + "}";
  }
  template <class MakeElement>
  std::string array(std::size_t count, MakeElement makeElement) {
    std::string result = "[";
    for (std::size_t index = 0; index < count; ++index) {
      if (index > 0) result += ",\n ";
      result += makeElement();
    }
    return result + "]";
  }

  std::mt19937_64 random_{1};
};

}  // namespace

const std::vector<Document>& documents() {
  static const std::vector<Document> all = [] {
    const char* folder = std::getenv("ZEB_BENCH_DATA");
    std::vector<Document> read = readDocuments(folder ? folder : "../shared/data");
    if (!read.empty()) return read;
    std::fputs("zeb_bench: no JSON files were found; generated documents are measured\n", stderr);
    return Maker().make();
  }();
  return all;
}

std::string makeRecord(std::size_t number) {
  const std::string text = std::to_string(number);
  return "{\"id\":" + text + ",\"name\":\"user " + text + "\",\"email\":\"user" + text +
         "@example.org\",\"score\":" + std::to_string(number % 97) +
         ".5,\"active\":" + (number % 2 ? "true" : "false") + ",\"tags\":[\"reader\",\"tag" +
         std::to_string(number % 13) + "\"],\"address\":{\"city\":\"city " +
         std::to_string(number % 101) + "\",\"zip\":" + std::to_string(10'000 + number) + "}}";
}

}  // namespace zeb::bench
