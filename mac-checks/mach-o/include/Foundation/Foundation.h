// Declarations of Foundation for the Mach-O check: only the names in use, with the nullability, generics and
// availability that a Mac's own headers give them. Nothing that is compiled against this is ever run.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <sys/types.h>

#define HALVO_INTRODUCED(version) __attribute__((availability(macos, introduced = version)))

#define NS_ASSUME_NONNULL_BEGIN _Pragma("clang assume_nonnull begin")
#define NS_ASSUME_NONNULL_END _Pragma("clang assume_nonnull end")
#define NS_DESIGNATED_INITIALIZER __attribute__((objc_designated_initializer))
#define NS_ENUM(type, name) \
  enum name : type name;    \
  enum name : type
#define NS_SWIFT_NAME(name) __attribute__((swift_name(#name)))
#define NS_UNAVAILABLE __attribute__((unavailable))

// BOOL is another type on each processor.
#if __OBJC_BOOL_IS_BOOL
typedef bool BOOL;
#else
typedef signed char BOOL;
#endif
#define YES __objc_yes
#define NO __objc_no
#define nil nullptr
#define Nil nullptr

typedef long NSInteger;
typedef unsigned long NSUInteger;
typedef unsigned short unichar;

typedef struct _NSRange {
  NSUInteger location;
  NSUInteger length;
} NSRange;

static inline NSRange NSMakeRange(NSUInteger location, NSUInteger length) { return {location, length}; }

typedef struct _NSZone NSZone;

NS_ASSUME_NONNULL_BEGIN

@class NSData, NSDictionary<Key, Object>, NSError, NSNumber, NSString, Protocol;

@protocol NSObject
- (Class)class;
- (BOOL)isKindOfClass:(Class)aClass;
- (BOOL)respondsToSelector:(SEL)aSelector;
@property(readonly, copy) NSString* description;
@end

__attribute__((objc_root_class))
@interface NSObject<NSObject> {
  Class isa;
}
+ (instancetype)alloc;
- (instancetype)init NS_DESIGNATED_INITIALIZER;
+ (Class)class;
- (void)dealloc;
@end

@interface NSObject (NSKeyValueCoding)
- (nullable id)valueForKey:(NSString*)key;
@end

@protocol NSCopying
- (id)copyWithZone:(nullable NSZone*)zone;
@end

typedef struct {
  unsigned long state;
  id __unsafe_unretained _Nullable* _Nullable itemsPtr;
  unsigned long* _Nullable mutationsPtr;
  unsigned long extra[5];
} NSFastEnumerationState;

@protocol NSFastEnumeration
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained _Nullable[_Nonnull])buffer
                                    count:(NSUInteger)length;
@end

@interface NSString : NSObject <NSCopying>
@property(readonly) NSUInteger length;
- (unichar)characterAtIndex:(NSUInteger)index;
- (instancetype)init NS_DESIGNATED_INITIALIZER;
- (void)getCharacters:(unichar*)buffer range:(NSRange)range;
- (instancetype)initWithCharacters:(const unichar*)characters length:(NSUInteger)length;
- (BOOL)isEqualToString:(NSString*)other;
@property(nullable, readonly) const char* UTF8String;
+ (nullable instancetype)stringWithUTF8String:(const char*)text;
@end

@interface NSData : NSObject <NSCopying>
@property(readonly) NSUInteger length;
@property(readonly) const void* bytes;
+ (instancetype)data;
+ (instancetype)dataWithBytes:(nullable const void*)bytes length:(NSUInteger)length;
@end

@interface NSValue : NSObject <NSCopying>
@property(readonly) const char* objCType;
- (void)getValue:(void*)value size:(NSUInteger)size HALVO_INTRODUCED(10.13);
@end

@interface NSNumber : NSValue
@property(readonly) BOOL boolValue;
@property(readonly) long long longLongValue;
- (BOOL)isEqualToNumber:(NSNumber*)number;
+ (NSNumber*)numberWithBool:(BOOL)value;
+ (NSNumber*)numberWithInt:(int)value;
+ (NSNumber*)numberWithLongLong:(long long)value;
@end

@interface NSNull : NSObject <NSCopying>
+ (NSNull*)null;
@end

@interface NSArray<__covariant Object> : NSObject <NSCopying, NSFastEnumeration>
+ (instancetype)arrayWithObjects:(const Object _Nonnull[_Nonnull])objects count:(NSUInteger)count;
@end

@interface NSDictionary<__covariant Key, __covariant Object> : NSObject <NSCopying, NSFastEnumeration>
@property(readonly) NSUInteger count;
- (nullable Object)objectForKeyedSubscript:(Key)key HALVO_INTRODUCED(10.6);
@end

typedef NSString* NSErrorDomain;
extern "C" NSErrorDomain const NSCocoaErrorDomain;

@interface NSError : NSObject <NSCopying>
@property(readonly, copy) NSErrorDomain domain;
@property(readonly) NSInteger code;
@property(readonly, copy) NSString* localizedDescription;
@end

typedef NSUInteger NSJSONReadingOptions;

@interface NSJSONSerialization : NSObject
+ (nullable id)JSONObjectWithData:(NSData*)data options:(NSJSONReadingOptions)options error:(NSError**)error;
@end

typedef NSUInteger NSPropertyListReadOptions;
enum : NSPropertyListReadOptions { NSPropertyListImmutable = 0 };
typedef NSUInteger NSPropertyListFormat;

@interface NSPropertyListSerialization : NSObject
+ (nullable id)propertyListWithData:(NSData*)data
                            options:(NSPropertyListReadOptions)options
                             format:(nullable NSPropertyListFormat*)format
                              error:(NSError**)error;
@end

extern "C" {
const char* NSGetSizeAndAlignment(const char* type, NSUInteger* _Nullable size, NSUInteger* _Nullable alignment);
NSString* NSStringFromClass(Class aClass);
SEL NSSelectorFromString(NSString* name);
}

NS_ASSUME_NONNULL_END

#include <Foundation/NSXPCConnection.h>
