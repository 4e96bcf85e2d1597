#include <ZEBPlatform/AddressBook.h>
#include <ZEBPlatform/Notifications.h>
#include <ZEBPlatform/RunLoop.h>
#include <ZEBUtilities/Contacts.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "Bench.h"

#if ZEB_BENCH_HAVE_EBOOK
#include <libebook-contacts/libebook-contacts.h>
#endif

namespace zeb::bench {

namespace {

constexpr int cardCount = 10'000;

/// A card as address book programs write it: folded, with properties that nobody asks for.
std::string makeCard(int number) {
  const std::string text = std::to_string(number);
  std::string card =
      "BEGIN:VCARD\r\nVERSION:3.0\r\nPRODID:-//Example//Address book 1.0//EN\r\n"
      "UID:3f2b9c1e-0000-4a7d-9d5e-" +
      std::string(12 - text.size(), '0') + text + "\r\nFN:Given" + text +
      " van der Fam\xC3\xADlia" + text + "\r\nN:van der Fam\xC3\xADlia" + text + ";Given" + text +
      ";;;\r\nORG:Example\\, Inc.;Sales\r\nEMAIL;TYPE=INTERNET;TYPE=HOME:given" + text +
      "@example.org\r\n";
  if (number % 2 == 0) card += "EMAIL;TYPE=INTERNET,WORK:sales" + text + "@example.com\r\n";
  card += "TEL;TYPE=CELL:+1 (555) " + std::to_string(100'0000 + number) + "\r\n";
  if (number % 3 == 0) card += "item1.TEL;TYPE=\"work,voice\":030 " + text + ",12\r\n";
  return card +
         "ADR;TYPE=HOME:;;1 Long Street with a long name\\, and a second line of it;Some \r\n"
         " Town;;12345;Some Country\r\nNOTE:Met at the fair.\\nLikes tea.\r\n"
         "REV:2024-05-17T10:00:00Z\r\nEND:VCARD\r\n";
}

/// A folder with one file for each card, which is the process's address book while it lives.
class Folder {
 public:
  Folder() {
    require(mkdtemp(path_.data()), "no temporary folder");
    for (int number = 0; number < cardCount; ++number) {
      std::ofstream(path_ + "/card" + std::to_string(number) + ".vcf") << makeCard(number);
    }
    CNSetHostConfiguration(
        {path_, path_ + ".access", [](CNEntityType, const auto& answer) { answer(true); }});
    store_ = makeRef<ContactBackingStore>();
    CNAuthorizationStatus status = CNAuthorizationStatusNotDetermined;
    store_->authorizeWithCompletion([&](CNAuthorizationStatus answered) {
      status = answered;
      NSRunLoop::mainRunLoop()->stop();
    });
    NSRunLoop::mainRunLoop()->run();
    require(status == CNAuthorizationStatusAuthorized, "no access to the folder");
  }
  ~Folder() {
    CNSetHostConfiguration({});
    store_ = nullptr;
    std::filesystem::remove_all(path_);
    std::filesystem::remove(path_ + ".access");
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  const std::string& path() const { return path_; }
  NSArray fetch() const {
    NSArray result;
    store_->fetchContactsWithCompletion([&](const NSArray& contacts) {
      result = contacts;
      NSRunLoop::mainRunLoop()->stop();
    });
    NSRunLoop::mainRunLoop()->run();
    return result;
  }
  NSArray fetchCold() const {
    NSNotificationCenter::defaultCenter()->postNotificationName(CNContactStoreDidChangeNotification,
                                                                store_->contactStore());
    return fetch();
  }

 private:
  std::string path_ = (std::filesystem::temp_directory_path() / "zeb-bench.XXXXXX").string();
  Ref<ContactBackingStore> store_;
};

const Case fetchCached("contacts.fetch.cached", [](Report& report) {
  const Folder folder;
  require(folder.fetchCold().count() == cardCount, "missing contacts");
  const Seconds seconds =
      measureInTurns([&] { consume(folder.fetch()); }, [&] { consume(folder.fetchCold()); });
  report.add(
      nanosecondsEach("10,000 contacts, cached", "the same, read from the files", seconds, 1));
});

const Ref<Contact>& writtenContact() {
  static const auto contact = makeRef<Contact>(
      "Ann van der Fam\xC3\xADlia", NSArray{"ann@example.org", "sales@example.com"},
      NSArray{"+1 (555) 010-0199", "030 1234,12"}, "3f2b9c1e");
  return contact;
}

#if ZEB_BENCH_HAVE_EBOOK

/// What our contacts keep.
struct PeerContact {
  std::string name, identifier;
  std::vector<std::string> addresses, numbers;
};

std::string textIn(EContact* contact, EContactField field) {
  const auto* text = static_cast<const char*>(e_contact_get_const(contact, field));
  return text ? text : "";
}

std::vector<std::string> textsIn(EContact* contact, EContactField field) {
  auto* list = static_cast<GList*>(e_contact_get(contact, field));
  std::vector<std::string> texts;
  for (const GList* item = list; item; item = item->next) {
    texts.emplace_back(static_cast<const char*>(item->data));
  }
  g_list_free_full(list, g_free);
  return texts;
}

std::vector<PeerContact> loadByPeer(const std::string& path) {
  std::vector<PeerContact> contacts;
  for (const auto& file : std::filesystem::directory_iterator(path)) {
    char* text = nullptr;
    if (!g_file_get_contents(file.path().c_str(), &text, nullptr, nullptr)) continue;
    EContact* const contact = e_contact_new_from_vcard(text);
    contacts.push_back({textIn(contact, E_CONTACT_FULL_NAME), textIn(contact, E_CONTACT_UID),
                        textsIn(contact, E_CONTACT_EMAIL), textsIn(contact, E_CONTACT_TEL)});
    g_object_unref(contact);
    g_free(text);
  }
  return contacts;
}

/// The numbers of contacts, addresses and phone numbers, and the bytes of all texts.
using Sums = std::vector<std::size_t>;

Sums sumsOf(const std::vector<PeerContact>& contacts) {
  Sums sums{contacts.size(), 0, 0, 0};
  for (const PeerContact& contact : contacts) {
    sums[1] += contact.addresses.size();
    sums[2] += contact.numbers.size();
    sums[3] += contact.name.size() + contact.identifier.size();
    for (const std::string& text : contact.addresses) sums[3] += text.size();
    for (const std::string& text : contact.numbers) sums[3] += text.size();
  }
  return sums;
}

Sums sumsOf(const NSArray& contacts) {
  std::vector<PeerContact> copies;
  const auto texts = [](const NSArray& array) {
    std::vector<std::string> all;
    for (const Value& text : array) all.push_back(NSString(text).utf8());
    return all;
  };
  for (const Value& element : contacts) {
    const auto contact = element.object<Contact>();
    copies.push_back({contact->fullName().utf8(), contact->uniqueIdentifier().utf8(),
                      texts(contact->emailAddresses()), texts(contact->phoneNumbers())});
  }
  return sumsOf(copies);
}

const Case load("contacts.load", [](Report& report) {
  const Folder folder;
  require(sumsOf(folder.fetchCold()) == sumsOf(loadByPeer(folder.path())), "different contacts");
  const Seconds seconds = measureInTurns([&] { consume(folder.fetchCold()); },
                                         [&] { consume(loadByPeer(folder.path())); });
  report.add(nanosecondsEach("ContactBackingStore, 10,000 files, per contact",
                             "libebook-contacts, the same files", seconds, cardCount));
});

EContact* peerContact() {
  EContact* const contact = e_contact_new();
  const Ref<Contact>& ours = writtenContact();
  e_contact_set(contact, E_CONTACT_FULL_NAME, ours->fullName().utf8().c_str());
  const auto add = [&](const char* name, const char* type, const NSArray& texts) {
    for (const Value& text : texts) {
      EVCardAttribute* const attribute = e_vcard_attribute_new(nullptr, name);
      e_vcard_attribute_add_param_with_value(attribute, e_vcard_attribute_param_new("TYPE"), type);
      e_vcard_add_attribute_with_value(E_VCARD(contact), attribute, NSString(text).utf8().c_str());
    }
  };
  add("TEL", "voice", ours->phoneNumbers());
  add("EMAIL", "internet", ours->emailAddresses());
  return contact;
}

const Case write("vcard.write", [](Report& report) {
  EContact* const peer = peerContact();
  const auto writeByPeer = [&] { return e_vcard_to_string(E_VCARD(peer), EVC_FORMAT_VCARD_30); };
  char* const text = writeByPeer();
  const std::string written = text;
  g_free(text);
  for (const char* part : {"Fam\xC3\xADlia", "ann@example.org", "sales@example.com", "010-0199"}) {
    require(written.find(part) != std::string::npos, "the peer's card lacks a part");
  }
  const Seconds seconds = measureInTurns([] { consume(writtenContact()->vCardRepresentation()); },
                                         [&] {
                                           char* const card = writeByPeer();
                                           consume(card);
                                           g_free(card);
                                         });
  g_object_unref(peer);
  report.add(nanosecondsEach("vCardRepresentation", "libebook-contacts", seconds, 1));
});

#else

const Case load("contacts.load", [](Report& report) { report.skip("libebook-contacts"); });
const Case write("vcard.write", [](Report& report) { report.skip("libebook-contacts"); });

#endif

}  // namespace

}  // namespace zeb::bench
