// Reads the input as a file of vCards. Each text of a card is well-formed, not empty and without
// spaces around it, all texts together are not much longer than the input, and undoing all folding
// beforehand changes nothing.

#include <ZEBPlatform/AddressBook/VCardReaderPrivate.h>
#include <ZEBPlatform/Foundation/NSString.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

using namespace zeb;

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

/// All texts of all cards, and the reasons for those left out.
std::vector<std::string> read(std::string_view input) {
  std::vector<std::string> texts;
  std::size_t length = 0;
  const auto add = [&](const NSString& text) {
    texts.push_back(text.utf8());
    if (!text) return;
    require(text.isWellFormed() && text.length() > 0);
    require(texts.back().front() != ' ' && texts.back().back() != ' ');
    length += text.length();
  };
  std::size_t place = 0;
  detail::readVCards(
      input,
      [&](const detail::VCard& card) {
        for (const NSString* text :
             {&card.uid, &card.formattedName, &card.namePrefix, &card.givenName, &card.middleName,
              &card.familyName, &card.nameSuffix, &card.nickname, &card.organizationName})
          add(*text);
        for (const Value& text : card.emailAddresses) add(NSString(text));
        for (const Value& text : card.phoneNumbers) add(NSString(text));
        texts.emplace_back(card.isGroup ? "group" : "contact");
      },
      [&](const detail::BrokenVCard& card) {
        require(card.place >= place && card.place < input.size());
        place = card.place;
        texts.emplace_back(card.reason);
      });
  require(length <= input.size());
  return texts;
}

std::string unfolded(std::string_view input) {
  std::string text;
  for (std::size_t place = 0; place < input.size(); ++place) {
    std::size_t end = place;
    if (input[end] == '\r') ++end;
    if (end + 1 < input.size() && input[end] == '\n' &&
        (input[end + 1] == ' ' || input[end + 1] == '\t')) {
      place = end + 1;
    } else {
      text += input[place];
    }
  }
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const std::vector<std::string> texts = read(input);
  const std::string plain = unfolded(input);
  // A mark of UTF-8 counts only at the beginning, where a fold may hide it.
  if (!plain.starts_with("\xEF\xBB\xBF")) require(read(plain) == texts);
  return 0;
}
