#include <ZEBPlatform/KeyedCoding.h>
#include <ZEBPlatform/Runtime.h>
#include <ZEBUtilities/Contacts.h>

#include "Support/Support.h"

namespace zeb::test {

NSString vCardOf(const NSString& name, const NSArray& phones, const NSArray& addresses) {
  const NSData card = makeRef<Contact>(name, addresses, phones, "id")->vCardRepresentation();
  return card.isNil() ? NSString() : NSString::stringWithUTF8(card.view());
}

TEST(Contact, WritesExactlyTheseVCards) {
  const std::string start = "BEGIN:VCARD\r\nVERSION:4.0\r\n", end = "END:VCARD\r\n";
  const std::string phone = "TEL;TYPE=voice;VALUE=uri:", mail = "EMAIL;TYPE=internet:";
  const auto card = [&](const std::string& lines) { return NSString(start + lines + end); };
  EXPECT_EQ(vCardOf("Ann Lee", {"+1 555 0100,12"}, nullptr),
            card("FN:Ann Lee\r\n" + phone + "+1 555 0100;ext=12\r\n"));
  EXPECT_EQ(vCardOf(nullptr, nullptr, nullptr), card("FN:\r\n"));
  const std::string name = "J\xC3\xB6rg, \xF0\x9F\x98\x80;\\\n" + std::string(200, 'x');
  EXPECT_EQ(
      vCardOf(name, {"555;1,2", ",;", "", "\xD9\xA1;2\xEF\xBC\x9B"}, {"a,b;c@d", "\xC3\xA4@x"}),
      card("FN:" + name + "\r\n" + phone + "555;ext=1;ext=2\r\n" + phone + ";ext=;ext=\r\n" +
           phone + "\r\n" + phone + "\xD9\xA1;ext=2\xEF\xBC\x9B\r\n" + mail + "a,b;c@d\r\n" + mail +
           "\xC3\xA4@x\r\n"));
  // Unpaired surrogates have no UTF-8 form.
  const NSString odd(std::u16string_view(u"a\xD83D;"));
  EXPECT_TRUE(vCardOf(odd, nullptr, nullptr).isNil() && vCardOf("", {odd}, nullptr).isNil());
}

TEST(Contact, NormalizesPhoneNumbers) {
  const std::pair<const char*, const char*> rows[] = {
      {"+1 (555) 010-0199 ext. 12", "+15550100199"},
      {"tel:+49 (0)30/12345;ext=7", "+493012345"},
      {"(0) 30 - 1#2", "0301"},
      {"\xEF\xBC\x8B\xD9\xA1\xD9\xA2 \xF0\x9D\x9F\x98\xE2\x80\xAC+3", "+1203"},
      {"+\xE5\x86\x85 5\xE5\x86\x85"
       "1",
       "+5"},
      {"office", ""},
      {"+", ""}};
  for (const auto& [number, normalized] : rows)
    EXPECT_EQ(normalizedPhoneNumber(number), normalized) << number;
  EXPECT_EQ(normalizedPhoneNumber(nullptr), "");
}

TEST(Contact, TravelsThroughTheKeyedCoderAndAnswersSelectors) {
  NSMutableString changing("J\xC3\xB6rg");
  const auto contact = makeRef<Contact>(changing, NSArray{"a@b"}, NSArray{"none", "+1 2,3"}, "7#2");
  changing.setString("");
  const NSData archive = NSKeyedArchiver::archivedDataWithRootObject(contact);
  EXPECT_EQ(NSString::stringWithUTF8(archive.view()),
            "{\"archive\":\"keyed\",\"version\":1,\"class\":\"_Contact\",\"fields\":"
            "{\"fullName\":\"J\xC3\xB6rg\",\"emailAddresses\":[\"a@b\"],"
            "\"phoneNumbers\":[\"none\",\"+1 2,3\"],\"normalizedPhoneNumbers\":[\"+12\"],"
            "\"uniqueIdentifier\":\"7#2\"}}");
  NSError error;
  const Ref<Contact> read = NSKeyedUnarchiver::unarchivedObjectOfClass<Contact>(archive, &error);
  ASSERT_TRUE(read) << error;
  for (const SEL property :
       {"fullName"_sel, "emailAddresses"_sel, "phoneNumbers"_sel, "normalizedPhoneNumbers"_sel,
        "uniqueIdentifier"_sel, "vCardRepresentation"_sel}) {
    const Value value = send(read, property);
    EXPECT_TRUE(!value.isNil() && value == send(contact, property)) << property.name();
  }
  const NSData other = NSData::dataWithBytes(
      R"({"archive":"keyed","version":1,"class":"_Contact","fields":{"phoneNumbers":[1]}})");
  EXPECT_FALSE(NSKeyedUnarchiver::unarchivedObjectOfClass<Contact>(other, &error));
  EXPECT_EQ(error.localizedDescription(), "The field \"phoneNumbers\" is not an array of strings.");
}

}  // namespace zeb::test
