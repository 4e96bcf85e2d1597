// A program of another project that uses the component Contacts.
#include <ZEBPlatform/AddressBook.h>

#include <cstdio>

int main() {
  using namespace zeb;
  const auto contact =
      makeRef<CNContact>(CNContactFields{.givenName = "太郎", .familyName = "山田"});
  const NSString name =
      CNContactFormatter::stringFromContact(contact, CNContactFormatterStyleFullName);
  if (name == "山田太郎") return 0;
  std::puts(name.description().utf8().c_str());
  return 1;
}
