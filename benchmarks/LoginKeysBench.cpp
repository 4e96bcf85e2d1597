// For OpenSSL's functions without algorithm objects, which are the fastest for short messages.
#define OPENSSL_SUPPRESS_DEPRECATED

#include <ZEBPlatform/Security.h>
#include <ZEBUtilities/Encodings.h>
#include <ZEBUtilities/Keychain.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/sha.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "Bench.h"

namespace zeb::bench {

namespace {

constexpr std::int64_t user = 42;

/// The keychain is an embedded store in a folder of its own while this lives.
class OwnKeychain {
 public:
  OwnKeychain() : folder_(std::filesystem::temp_directory_path() / "zeb-bench-XXXXXX") {
    require(::mkdtemp(folder_.data()) != nullptr, "no temporary folder can be made");
    const auto store = EmbeddedKeychainStore::open(NSString(folder_), KeychainKeyInFile{});
    require(static_cast<bool>(store), "the embedded store cannot be opened");
    SecKeychainSetStore(store);
  }
  OwnKeychain(const OwnKeychain&) = delete;
  OwnKeychain& operator=(const OwnKeychain&) = delete;
  ~OwnKeychain() {
    SecKeychainSetStore(nullptr);
    std::error_code ignored;  // files that stay in the temporary folder do no harm
    std::filesystem::remove_all(folder_, ignored);
  }

 private:
  std::string folder_;
};

struct OpenSSLDeleter {
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
  void operator()(EVP_PKEY_CTX* context) const { EVP_PKEY_CTX_free(context); }
};
using PeerKey = std::unique_ptr<EVP_PKEY, OpenSSLDeleter>;

PeerKey peerKey() {
  Value value;
  require(SecItemCopyMatching({{kSecClass, kSecClassKey},
                               {kSecAttrKeyClass, kSecAttrKeyClassPrivate},
                               {kSecReturnData, true}},
                              &value) == errSecSuccess,
          "the private key is missing");
  const NSData data(value);
  const auto* bytes = reinterpret_cast<const unsigned char*>(data.bytes().data());
  return PeerKey(d2i_PrivateKey(EVP_PKEY_RSA, nullptr, &bytes, static_cast<long>(data.length())));
}

NSData peerSignature(EVP_PKEY* key, std::string_view message) {
  std::array<unsigned char, SHA_DIGEST_LENGTH> digest;
  SHA1(reinterpret_cast<const unsigned char*>(message.data()), message.size(), digest.data());
  const std::unique_ptr<EVP_PKEY_CTX, OpenSSLDeleter> context(EVP_PKEY_CTX_new(key, nullptr));
  std::array<unsigned char, 256> signature;
  std::size_t length = signature.size();
  require(EVP_PKEY_sign_init(context.get()) == 1 &&
              EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING) == 1 &&
              EVP_PKEY_CTX_set_signature_md(context.get(), EVP_sha1()) == 1 &&
              EVP_PKEY_sign(context.get(), signature.data(), &length, digest.data(),
                            digest.size()) == 1,
          "OpenSSL cannot sign");
  return NSData::dataWithBytes(signature);
}

const Case rsaSign("rsa.sign", [](Report& report) {
  const OwnKeychain keychain;
  ZEBRSAOperations::generateKeyPairForUser(user);
  const PeerKey key = peerKey();
  const NSData message = NSData::dataWithBytes("approve the login 1234567890 from Berlin");
  const auto ours = [&] { return ZEBRSAOperations::signData(message, user); };
  const auto peer = [&] { return peerSignature(key.get(), message.view()); };
  require(ours() == peer(), "different signatures");
  const Seconds seconds = measureInTurns([&] { consume(ours()); }, [&] { consume(peer()); });
  report.add(nanosecondsEach("signData, fetches the key", "OpenSSL, keeps the key", seconds, 1));
});

constexpr std::size_t codeBytes = 8;

/// The bytes of a backup code.
NSData peerCode(std::string_view seed, int count) {
  std::array<unsigned char, SHA256_DIGEST_LENGTH> digest;
  const auto step = [&](const void* bytes, std::size_t length) {
    SHA256_CTX context;
    SHA256_Init(&context);
    SHA256_Update(&context, bytes, length);
    SHA256_Final(digest.data(), &context);
    digest[codeBytes - 1] &= 0xF0;
  };
  step(seed.data(), seed.size());
  for (int i = 1; i < count; ++i) step(digest.data(), codeBytes);
  return NSData::dataWithBytes(std::span(digest).first(codeBytes));
}

const Case backupCode("backupcode", [](Report& report) {
  constexpr int count = 1000;
  const NSData seed = ZEBSecurityKey::generateSeed();
  const auto ours = [&] { return ZEBSecurityKey::hashStringWithSeed(seed, count, 12); };
  const auto peer = [&] { return peerCode(seed.view(), count); };
  require(ours() == base32String(peer()).substringToIndex(12), "different codes");
  const Seconds seconds = measureInTurns([&] { consume(ours()); }, [&] { consume(peer()); });
  report.add(nanosecondsEach("hashStringWithSeed, each iteration", "OpenSSL SHA256", seconds,
                             static_cast<std::size_t>(count)));
});

}  // namespace

}  // namespace zeb::bench
