#include <ZEBPlatform/Security/SecKeyPrivate.h>

namespace zeb {

OSStatus detail::makeSecKey(const KeychainItem&, SecKeyRef&) { return errSecUnimplemented; }

}  // namespace zeb
