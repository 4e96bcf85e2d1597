#include <ZEBPlatform/KeyedCoding.h>
#include <ZEBPlatform/Runtime.h>
#include <ZEBUtilities/Contacts.h>

#include "Support/Support.h"

namespace zeb::test {

TEST(Contact, WritesExactlyTheseVCards) {
  const auto card = [](const NSString& name, const NSArray& phones, const NSArray& addresses) {
    return makeRef<Contact>(name, addresses, phones, "id")->vCardRepresentation();
  };
  const std::string start = "BEGIN:VCARD\r\nVERSION:4.0\r\nFN:", end = "END:VCARD\r\n";
  const std::string phone = "TEL;TYPE=voice;VALUE=uri:", mail = "EMAIL;TYPE=internet:";
  const std::string name = "J\xC3\xB6rg, \xF0\x9F\x98\x80;\\\n" + std::string(200, 'x');
  EXPECT_EQ(card("Ann Lee", {"+1 555 0100,12"}, nullptr).view(),
            start + "Ann Lee\r\n" + phone + "+1 555 0100;ext=12\r\n" + end);
  EXPECT_EQ(card(nullptr, nullptr, nullptr).view(), start + "\r\n" + end);
  EXPECT_EQ(card(name, {"555;1,2", "", "\xD9\xA1,;2"}, {"a,b;c@d", "\xC3\xA4@x"}).view(),
            start + name + "\r\n" + phone + "555;ext=1;ext=2\r\n" + phone + "\r\n" + phone +
                "\xD9\xA1;ext=;ext=2\r\n" + mail + "a,b;c@d\r\n" + mail + "\xC3\xA4@x\r\n" + end);
  // Unpaired surrogates have no UTF-8 form.
  const NSString odd(std::u16string_view(u"a\xD83D;"));
  EXPECT_TRUE(card(odd, nullptr, nullptr).isNil() && card("", {odd}, nullptr).isNil());
}

TEST(Contact, NormalizesPhoneNumbers) {
  const std::pair<const char*, const char*> rows[] = {
      {"+1 (555) 010-0199 ext. 12", "+15550100199"},
      {"tel:+49 (0)30/12345;ext=7", "+493012345"},
      {"(0) 30 - 1#2", "0301"},
      {"\xEF\xBC\x8B\xD9\xA1\xF0\x9D\x9F\x98+3\xE5\x86\x85 4", "+103"},
      {"office +", ""}};
  for (const auto& [number, normalized] : rows)
    EXPECT_EQ(normalizedPhoneNumber(number), normalized) << number;
}

TEST(Contact, TravelsThroughTheKeyedCoderAndAnswersSelectors) {
  NSMutableString name("J\xC3\xB6rg"), address("a@b");
  const auto contact = makeRef<Contact>(name, NSArray{address}, NSArray{"none", "+1 2,3"}, "7#2");
  name.setString("");
  address.setString("");
  const NSData archive = NSKeyedArchiver::archivedDataWithRootObject(contact);
  EXPECT_EQ(archive.view(),
            "{\"archive\":\"keyed\",\"version\":1,\"class\":\"_Contact\",\"fields\":"
            "{\"fullName\":\"J\xC3\xB6rg\",\"emailAddresses\":[\"a@b\"],"
            "\"phoneNumbers\":[\"none\",\"+1 2,3\"],\"normalizedPhoneNumbers\":[\"+12\"],"
            "\"uniqueIdentifier\":\"7#2\"}}");
  const auto read = NSKeyedUnarchiver::unarchivedObjectOfClass<Contact>(archive);
  ASSERT_TRUE(read);
  for (const SEL property : {"fullName"_sel, "emailAddresses"_sel, "phoneNumbers"_sel,
                             "normalizedPhoneNumbers"_sel, "uniqueIdentifier"_sel})
    EXPECT_EQ(send(read, property), send(contact, property)) << property.name();
  EXPECT_EQ(send(read, "vCardRepresentation"_sel), contact->vCardRepresentation());
}

}  // namespace zeb::test
