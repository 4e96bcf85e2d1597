#include <ZEBUtilities/JSON/NSData+ZEBJSONAdditions.h>
#include <ZEBUtilities/JSON/ZEBJSONSerialization.h>

namespace zeb {

// Spells out the identifier prefix, because a constant must be initialised before any code runs.
const char* const ZEBNSDataJSONAdditionsErrorDomain = "org.zebutilities.ZEBOrvaneJSONParsing";

namespace {

template <class Handle>
Handle rootOfKind(const NSData& data, NSError* error) {
  const Value root = ZEBJSONSerialization::JSONObjectWithData(data, 0, error);
  const Handle typed(root);
  if (!root.isNil() && typed.isNil() && error) {
    *error = NSError(ZEBNSDataJSONAdditionsErrorDomain, ZEBNSDataJSONAdditionsErrorUnexpectedRoot);
  }
  return typed.copy();
}

}  // namespace

NSDictionary zeb_JSONDictionary(const NSData& data, NSError* error) {
  return rootOfKind<NSDictionary>(data, error);
}

NSArray zeb_JSONArray(const NSData& data, NSError* error) {
  return rootOfKind<NSArray>(data, error);
}

}  // namespace zeb
