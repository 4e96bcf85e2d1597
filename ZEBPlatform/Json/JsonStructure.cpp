#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <ZEBPlatform/Json/JsonStructurePrivate.h>
#include <ZEBPlatform/Json/SimdjsonPrivate.h>

namespace zeb::detail {

namespace {

bool isSpace(char character) noexcept {
  return character == ' ' || character == '\n' || character == '\r' || character == '\t';
}

bool isOperator(char character) noexcept {
  return std::string_view("{}[]:,").find(character) != std::string_view::npos;
}

}  // namespace

class JsonStructure::Engine : public simdjson_access::FirstStage {};

JsonStructure::JsonStructure() : engine_(new Engine) {}
JsonStructure::~JsonStructure() { delete engine_; }

JsonFault JsonStructure::scan(std::string_view utf8) {
  if (utf8.size() > UINT32_MAX - 64) return {"The text is larger than 4 GiB", 0};
  if (engine_->run(utf8.data(), utf8.size())) {
    indexes_ = {engine_->indexes(), engine_->count()};
    return {};
  }
  // The fast scan only reports that something is wrong. The plain scan finds the position.
  return scanPlainly(utf8);
}

JsonFault JsonStructure::scanPlainly(std::string_view utf8) {
  if (const std::size_t malformed = findMalformedUTF8(utf8); malformed != utf8.npos) {
    return {"Malformed UTF-8", malformed};
  }
  own_.clear();
  std::size_t offset = 0;
  while (offset < utf8.size()) {
    const char character = utf8[offset];
    if (isSpace(character)) {
      ++offset;
      continue;
    }
    own_.push_back(static_cast<std::uint32_t>(offset));
    const std::size_t start = offset++;
    if (isOperator(character)) continue;
    if (character != '"') {
      while (offset < utf8.size() && !isSpace(utf8[offset]) && !isOperator(utf8[offset]) &&
             utf8[offset] != '"') {
        ++offset;
      }
      continue;
    }
    while (offset < utf8.size() && utf8[offset] != '"') {
      if (static_cast<unsigned char>(utf8[offset]) < 0x20) {
        return {"Unescaped control character in a string", offset};
      }
      offset += utf8[offset] == '\\' ? 2 : 1;
    }
    if (offset >= utf8.size()) return {"Unterminated string", start, true};
    ++offset;
  }
  if (own_.empty()) return {"No value", utf8.size(), true};
  const std::size_t found = own_.size();
  own_.push_back(static_cast<std::uint32_t>(utf8.size()));
  indexes_ = {own_.data(), found};
  return {};
}

std::size_t JsonStructure::reservedBytes() const noexcept {
  return engine_->reservedBytes() + own_.capacity() * sizeof(std::uint32_t);
}

std::size_t JsonStructure::usedBytes() const noexcept {
  return engine_->usedBytes() + own_.capacity() * sizeof(std::uint32_t);
}

void JsonStructure::discardAfter(std::size_t bytes) noexcept {
  std::vector<std::uint32_t>().swap(own_);
  engine_->discardAfter(bytes);
  indexes_ = {};
}

}  // namespace zeb::detail
