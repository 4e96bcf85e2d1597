#include <ZEBPlatform/AddressBook/VCardReaderPrivate.h>
#include <ZEBPlatform/Foundation/NSArray.h>

#include "Support/Support.h"

namespace zeb::test {

/// All cards of the text, as "name1=value1 name2=value2", and the reasons for those left out.
std::string cardsOf(std::string_view text) {
  std::string summary;
  const auto add = [&](const char* name, const NSString& value) {
    if (value) summary += std::string(name) + "=" + value.utf8() + " ";
  };
  detail::readVCards(
      text,
      [&](const detail::VCard& card) {
        add("uid", card.uid);
        add("fn", card.formattedName);
        add("prefix", card.namePrefix);
        add("given", card.givenName);
        add("middle", card.middleName);
        add("family", card.familyName);
        add("suffix", card.nameSuffix);
        add("nick", card.nickname);
        add("org", card.organizationName);
        for (const Value& address : card.emailAddresses) add("mail", NSString(address));
        for (const Value& number : card.phoneNumbers) add("tel", NSString(number));
        summary += card.isGroup ? "group;" : ";";
      },
      [&](const detail::BrokenVCard& card) {
        summary += "!" + std::to_string(card.place) + " " + card.reason + ";";
      });
  return summary;
}

std::string cardWith(const std::string& lines) {
  return "BEGIN:VCARD\r\nVERSION:4.0\r\n" + lines + "\r\nEND:VCARD\r\n";
}

TEST(VCards, LinesAndTheirValues) {
  const struct {
    const char* lines;
    const char* content;
  } cases[] = {
      {"N:Lee;Ann,Marie;Q.;Dr.;Jr., M.D.\nFN:Ann Lee",
       "fn=Ann Lee prefix=Dr. given=Ann Marie middle=Q. family=Lee suffix=Jr. M.D. ;"},
      {"N:a\\;b\\,c\\\\;\\n;x\\y\nFN:p;q,r", "fn=p;q,r given=\n middle=x\\y family=a;b,c\\ ;"},
      {"N:;;;;\nN:Lee\nN:Other\nFN:  \nFN:Ann\nNICKNAME:A,B\nORG:Acme\\, Inc.;Sales",
       "fn=Ann family=Lee nick=A org=Acme, Inc. ;"},
      {"EMAIL:a@b.c\nFN:x\nEMAIL:\nEMAIL;TYPE=INTERNET,PREF:mailto:c@d",
       "fn=x mail=a@b.c mail=c@d ;"},
      // Folding: inside a character, a name, a parameter; a tab; LF alone; the end of the text.
      {"FN:J\xC3\r\n \xBC"
       "rg\nE\n MAIL;TY\n\tPE=x:a@\n b\nTEL:12\r\n ",
       "fn=Jürg mail=a@b tel=12 ;"},
      {"PHOTO:AAAA\n EMAIL:no\n FN:no\nFN:x", "fn=x ;"},
      // Groups, quotes, quotes that are not closed, no colon.
      {"item1.FN;X=\"a:b;c\":x\na.b.tel;TYPE=\"home,cell:\";PREF=1: 5 \nEMAIL;X=\"y:z\nFN\nno line",
       "fn=x mail=z tel=5 ;"},
      {"fn;charset=utf-8:\xC3\xA9\nEMAIL;CHARSET=ISO-8859-1:\xE9@x\nTEL;CHARSET=x:\xE9\xED\xA0\x80",
       "fn=é mail=é@x tel=\uFFFD\uFFFD\uFFFD\uFFFD ;"},
      {"FN:x\nTEL;VALUE=uri:tel:+1-555;ext=12;phone-context=a\nTEL:TEL:5%206\nTEL;VALUE=\"URI\":5;"
       "ext=1;"
       "ext=2\nTEL:5;ext=1\nTEL;VALUE=uri:sip:a;ext=1\nTEL;VALUE=uri:tel:%zz",
       "fn=x tel=+1-555,12 tel=5 6 tel=5,1,2 tel=5;ext=1 tel=sip:a;ext=1 tel=%zz ;"},
      {"KIND:group\nFN:g\nMEMBER:urn:uuid:g\nUID:urn:uuid:g", "uid=urn:uuid:g fn=g group;"},
      {"X-ADDRESSBOOKSERVER-KIND:group\nFN:g", "fn=g group;"},
  };
  for (const auto& [lines, content] : cases) EXPECT_EQ(cardsOf(cardWith(lines)), content) << lines;
}

TEST(VCards, BrokenCardsLeaveTheOthers) {
  const struct {
    std::string text;
    const char* content;
  } cases[] = {
      {"", ""},
      {"\xEF\xBB\xBF"
       "begin:vcard\nfn:1\nend:vcard\nFN:outside\nBEGIN:VEVENT\n" +
           cardWith("FN:2"),
       "fn=1 ;fn=2 ;"},
      {"BEGIN:VCARD\nFN:1\nTEL:55" + ("\n" + cardWith("FN:2\nTEL:6")) +
           "BEGIN:VCARD\nFN:3\nEND:VCAR",
       "!0 END:VCARD is missing;fn=2 tel=6 ;!73 END:VCARD is missing;"},
      {"BEGIN:VCARD\nVERSION:3.0\nFN:1\nEND:VCARD\nBEGIN:VCARD\nVERSION:2.1\nFN:2\nEND:VCARD",
       "fn=1 ;!39 its version is neither 3.0 nor 4.0;"},
      {cardWith("UID:1\nTEL: \nN:;"), "!0 it has neither a name nor an address nor a number;"},
  };
  for (const auto& [text, content] : cases) EXPECT_EQ(cardsOf(text), content) << text;
}

/// These take for ever if the time is not linear.
TEST(VCards, LongTexts) {
  constexpr std::size_t count = 1'000'000;
  std::string folded = "FN:";
  while (folded.size() < count) folded += "\n a";
  EXPECT_EQ(cardsOf(cardWith(folded)).size(), std::string("fn= ;").size() + (count - 1) / 3);
  std::string begins;
  while (begins.size() < count) begins += "BEGIN:VCARD\n";
  EXPECT_TRUE(cardsOf(begins).ends_with("is missing;"));
  for (const std::string piece : {"\\", ";", "\"", ",", "\xF0"}) {
    std::string value = "N;X=";
    while (value.size() < count) value += piece;
    EXPECT_EQ(cardsOf(cardWith("FN:x\n" + value + ":y")).substr(0, 4), "fn=x");
    EXPECT_EQ(cardsOf(cardWith("FN:x\nN:" + value)).substr(0, 4), "fn=x");
  }
}

}  // namespace zeb::test
