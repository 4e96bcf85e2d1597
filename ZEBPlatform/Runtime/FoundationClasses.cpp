#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSNull.h>
#include <ZEBPlatform/Foundation/NSNumber.h>
#include <ZEBPlatform/Foundation/NSOrderedSet.h>
#include <ZEBPlatform/Foundation/NSSet.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/NSURL.h>
#include <ZEBPlatform/Runtime/ClassRegistryPrivate.h>
#include <ZEBPlatform/Runtime/FoundationClassesPrivate.h>
#include <ZEBPlatform/Runtime/NSKeyValueCoding.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBPlatform/Runtime/Send.h>

namespace zeb::detail {

namespace {

void addRootMethods(Class* root) {
  extendClass(
      root,
      {
          method("self", [](const Value& self) { return self; }),
          method("class", [](const Value& self) { return object_getClass(self); }),
          method("superclass",
                 [](const Value& self) { return object_getClass(self)->superclass(); }),
          method("isKindOfClass:",
                 [](const Value& self, Class* cls) {
                   return object_getClass(self)->isSubclassOfClass(cls);
                 }),
          method("isMemberOfClass:",
                 [](const Value& self, Class* cls) { return object_getClass(self) == cls; }),
          method(
              "respondsToSelector:",
              [](const Value& self, SEL selector) { return respondsToSelector(self, selector); }),
          method("performSelector:",
                 [](const Value& self, SEL selector) { return performSelector(self, selector); }),
          method("performSelector:withObject:",
                 [](const Value& self, SEL selector, const Value& object) {
                   return performSelector(self, selector, object);
                 }),
          method("performSelector:withObject:withObject:",
                 [](const Value& self, SEL selector, const Value& first, const Value& second) {
                   return performSelector(self, selector, first, second);
                 }),
          method("doesNotRecognizeSelector:",
                 [](const Value& self, SEL selector) { doesNotRecognizeSelector(self, selector); }),
          method("valueForKey:",
                 [](const Value& self, const NSString& key) { return valueForKey(self, key); }),
          method("setValue:forKey:", [](const Value& self, const Value& value,
                                        const NSString& key) { setValueForKey(self, value, key); }),
          method("valueForKeyPath:", &valueForKeyPath),
          method("setValue:forKeyPath:", &setValueForKeyPath),
          method("isEqual:",
                 [](const Value& self, const Value& other) {
                   // Values take an object for equal to itself without asking it.
                   const NSObject* const object = self.objectPointer();
                   const NSObject* const candidate = other.objectPointer();
                   return object && candidate ? object->isEqual(*candidate) : self.isEqual(other);
                 }),
          method("hash", &Value::hash),
          method("description", &Value::description),
          method("copy", &Value::copy),
          method("mutableCopy", &Value::mutableCopy),
      });
  extendClass(root->classObject(), {
                                       method("class", [](const Value& self) { return self; }),
                                       method("superclass", &Class::superclass),
                                       method("isSubclassOfClass:", &Class::isSubclassOfClass),
                                       method("instancesRespondToSelector:",
                                              [](const Class& self, SEL selector) {
                                                return class_getInstanceMethod(&self, selector) !=
                                                       nullptr;
                                              }),
                                   });
}

/// Makes all classes first: while the static below is being made, no other code can have them.
class Builder {
 public:
  FoundationClasses classes;

  Builder() : classes{createClass("NSObject", nullptr)} { addRootMethods(classes.root); }

  Class* addKind(ValueKind kind, std::string_view name,
                 std::initializer_list<ClassMember> members) {
    return classes.immutableKinds[index(kind)] = classes.mutableKinds[index(kind)] =
               registerUnder(classes.root, name, members);
  }
  void addMutableKind(ValueKind kind, std::string_view name,
                      std::initializer_list<ClassMember> members) {
    classes.mutableKinds[index(kind)] =
        registerUnder(classes.immutableKinds[index(kind)], name, members);
  }

 private:
  static std::size_t index(ValueKind kind) { return static_cast<std::size_t>(kind); }
  static Class* registerUnder(Class* superclass, std::string_view name,
                              std::initializer_list<ClassMember> members) {
    Class* cls = createClass(name, superclass);
    extendClass(cls, members);
    return cls;
  }
};

void addNumbers(Builder& builder) {
  Class* number = builder.addKind(
      ValueKind::Boolean, "NSNumber",
      {
          method("boolValue", &Value::boolValue),
          method("intValue", &Value::intValue),
          method("integerValue", &Value::integerValue),
          method("longLongValue", &Value::longLongValue),
          method("unsignedLongLongValue", &NSNumber::unsignedLongLongValue),
          method("floatValue", &Value::floatValue),
          method("doubleValue", &Value::doubleValue),
          method("stringValue", &NSNumber::stringValue),
          method("compare:", &NSNumber::compare),
          method("isEqualToNumber:",
                 [](const Value& self, const NSNumber& other) { return self.isEqual(other); }),
      });
  for (const ValueKind kind : {ValueKind::SignedInteger, ValueKind::UnsignedInteger,
                               ValueKind::Float, ValueKind::Double}) {
    builder.classes.immutableKinds[static_cast<std::size_t>(kind)] = number;
  }
  builder.addKind(ValueKind::Null, "NSNull", {classMethod("null", &NSNull::null)});
  builder.addKind(
      ValueKind::Date, "NSDate",
      {
          classMethod("date", &NSDate::date),
          method("timeIntervalSinceReferenceDate", &NSDate::timeIntervalSinceReferenceDate),
          method("timeIntervalSince1970", &NSDate::timeIntervalSince1970),
          method("timeIntervalSinceDate:", &NSDate::timeIntervalSinceDate),
          method("dateByAddingTimeInterval:", &NSDate::dateByAddingTimeInterval),
          method("compare:", &NSDate::compare),
      });
}

void addTexts(Builder& builder) {
  builder.addKind(
      ValueKind::String, "NSString",
      {
          method("length", &NSString::length),
          method("characterAtIndex:",
                 [](const NSString& self, std::size_t index) {
                   return static_cast<std::uint16_t>(self.characterAtIndex(index));
                 }),
          method("boolValue", &Value::boolValue),
          method("intValue", &Value::intValue),
          method("integerValue", &Value::integerValue),
          method("longLongValue", &Value::longLongValue),
          method("floatValue", &Value::floatValue),
          method("doubleValue", &Value::doubleValue),
          method("compare:", &NSString::compare),
          method("isEqualToString:", &NSString::isEqualToString),
          method("hasPrefix:", &NSString::hasPrefix),
          method("hasSuffix:", &NSString::hasSuffix),
          method("containsString:", &NSString::containsString),
          method("substringFromIndex:", &NSString::substringFromIndex),
          method("substringToIndex:", &NSString::substringToIndex),
          method("stringByAppendingString:", &NSString::stringByAppendingString),
          method("componentsSeparatedByString:", &NSString::componentsSeparatedByString),
      });
  builder.addMutableKind(
      ValueKind::String, "NSMutableString",
      {
          classMethod("string", [] { return NSMutableString(); }),
          method("setString:", &NSMutableString::setString),
          method("appendString:",
                 [](NSMutableString self, const NSString& text) { self.appendString(text); }),
      });
  builder.addKind(ValueKind::URL, "NSURL",
                  {
                      classMethod("URLWithString:", &NSURL::URLWithString),
                      method("absoluteString", &NSURL::absoluteString),
                  });
  builder.addKind(ValueKind::Data, "NSData",
                  {
                      method("length", &NSData::length),
                      method("base64EncodedString", &NSData::base64EncodedString),
                  });
  builder.addMutableKind(ValueKind::Data, "NSMutableData",
                         {
                             classMethod("data", [] { return NSMutableData(); }),
                             method("appendData:", &NSMutableData::appendData),
                             method("setLength:", &NSMutableData::setLength),
                         });
}

void addCollections(Builder& builder) {
  builder.addKind(
      ValueKind::Array, "NSArray",
      {
          classMethod("array", &NSArray::array),
          method("count", &NSArray::count),
          method("objectAtIndex:", &NSArray::objectAtIndex),
          method("firstObject", &NSArray::firstObject),
          method("lastObject", &NSArray::lastObject),
          method("containsObject:", &NSArray::containsObject),
          method("indexOfObject:", [](const NSArray& self,
                                      const Value& object) { return self.indexOfObject(object); }),
          method("arrayByAddingObject:", &NSArray::arrayByAddingObject),
          method("componentsJoinedByString:", &NSArray::componentsJoinedByString),
      });
  builder.addMutableKind(
      ValueKind::Array, "NSMutableArray",
      {
          classMethod("array", [] { return NSMutableArray(); }),
          method("addObject:", &NSMutableArray::addObject),
          method("addObjectsFromArray:", &NSMutableArray::addObjectsFromArray),
          method("insertObject:atIndex:", &NSMutableArray::insertObject),
          method("replaceObjectAtIndex:withObject:", &NSMutableArray::replaceObjectAtIndex),
          method("removeObjectAtIndex:", &NSMutableArray::removeObjectAtIndex),
          method("removeLastObject", &NSMutableArray::removeLastObject),
          method("removeAllObjects", &NSMutableArray::removeAllObjects),
          method("removeObjectsAtIndexes:", &NSMutableArray::removeObjectsAtIndexes),
          method("exchangeObjectAtIndex:withObjectAtIndex:",
                 &NSMutableArray::exchangeObjectAtIndex),
          method("setArray:", &NSMutableArray::setArray),
      });
  builder.addKind(ValueKind::Dictionary, "NSDictionary",
                  {
                      classMethod("dictionary", &NSDictionary::dictionary),
                      method("count", &NSDictionary::count),
                      method("objectForKey:",
                             [](const NSDictionary& self, const Value& key) { return self[key]; }),
                      method("allKeys", &NSDictionary::allKeys),
                      method("allValues", &NSDictionary::allValues),
                  });
  builder.addMutableKind(
      ValueKind::Dictionary, "NSMutableDictionary",
      {
          classMethod("dictionary", [] { return NSMutableDictionary(); }),
          method("setObject:forKey:", [](NSMutableDictionary self, const Value& object,
                                         const Value& key) { self.setObject(object, key); }),
          method("removeObjectForKey:", &NSMutableDictionary::removeObjectForKey),
          method("removeAllObjects", &NSMutableDictionary::removeAllObjects),
          method("addEntriesFromDictionary:", &NSMutableDictionary::addEntriesFromDictionary),
      });
  builder.addKind(ValueKind::Set, "NSSet",
                  {
                      method("count", &NSSet::count),
                      method("containsObject:", &NSSet::containsObject),
                      method("member:", &NSSet::member),
                      method("anyObject", &NSSet::anyObject),
                      method("allObjects", &NSSet::allObjects),
                  });
  builder.addMutableKind(ValueKind::Set, "NSMutableSet",
                         {
                             classMethod("set", [] { return NSMutableSet(); }),
                             method("addObject:", &NSMutableSet::addObject),
                             method("removeObject:", &NSMutableSet::removeObject),
                             method("removeAllObjects", &NSMutableSet::removeAllObjects),
                         });
  builder.addKind(ValueKind::OrderedSet, "NSOrderedSet",
                  {
                      classMethod("orderedSetWithArray:", &NSOrderedSet::orderedSetWithArray),
                      method("count", &NSOrderedSet::count),
                      method("objectAtIndex:", &NSOrderedSet::objectAtIndex),
                      method("indexOfObject:", &NSOrderedSet::indexOfObject),
                      method("containsObject:", &NSOrderedSet::containsObject),
                      method("firstObject", &NSOrderedSet::firstObject),
                      method("lastObject", &NSOrderedSet::lastObject),
                      method("array", &NSOrderedSet::array),
                  });
  builder.addMutableKind(
      ValueKind::OrderedSet, "NSMutableOrderedSet",
      {
          classMethod("orderedSet", [] { return NSMutableOrderedSet(); }),
          method("addObject:", &NSMutableOrderedSet::addObject),
          method("insertObject:atIndex:", &NSMutableOrderedSet::insertObject),
          method("removeObject:", &NSMutableOrderedSet::removeObject),
          method("removeObjectAtIndex:", &NSMutableOrderedSet::removeObjectAtIndex),
          method("removeAllObjects", &NSMutableOrderedSet::removeAllObjects),
      });
}

}  // namespace

const FoundationClasses& foundationClasses() {
  static const FoundationClasses classes = [] {
    Builder builder;
    addNumbers(builder);
    addTexts(builder);
    addCollections(builder);
    return builder.classes;
  }();
  return classes;
}

}  // namespace zeb::detail
