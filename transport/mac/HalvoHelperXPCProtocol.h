// The helper's protocol as NSXPC sees it: ten messages, declared identically by the helper and by the application.
// Both ends compare the compiler's encodings, so that a change of any type here makes messages disappear.
// For Objective-C, Objective-C++ and Swift, which reads this header as it stands.
#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

// `bool`, never BOOL: BOOL is another type on Intel, and a client built for one processor could not talk to a helper
// built for the other.
@protocol HalvoHelperProtocol

- (void)pingWithReply:(void (^)(NSString* json))reply NS_SWIFT_NAME(ping(withReply:));
- (void)enumerateActiveGuiDomainsWithReply:(void (^)(NSString* json))reply
    NS_SWIFT_NAME(enumerateActiveGuiDomains(withReply:));

// The first generation, which carries no authorization.
- (void)prepareForRemovalWithAcceptAudioInterruption:(bool)acceptAudioInterruption
                                           withReply:(void (^)(NSString* json))reply
    NS_SWIFT_NAME(prepareForRemoval(acceptAudioInterruption:withReply:));
- (void)removeAppBundleWithPath:(NSString*)path
                      withReply:(void (^)(bool succeeded))reply NS_SWIFT_NAME(removeAppBundle(path:withReply:));
- (void)finalizeRemoval NS_SWIFT_NAME(finalizeRemoval());
- (void)installSystemPkgWithPkgPath:(NSString*)pkgPath
                       manifestJSON:(NSString*)manifestJSON
            acceptAudioInterruption:(bool)acceptAudioInterruption
                          withReply:(void (^)(NSString* json))reply
    NS_SWIFT_NAME(installSystemPkg(pkgPath:manifestJSON:acceptAudioInterruption:withReply:));

// `authorization` is the external form of an authorization reference that holds the administrator right.
- (void)prepareForRemovalWithAuthorization:(NSData*)authorization
                   acceptAudioInterruption:(bool)acceptAudioInterruption
                                 withReply:(void (^)(NSString* json))reply
    NS_SWIFT_NAME(prepareForRemoval(authorization:acceptAudioInterruption:withReply:));
- (void)removeAppBundleWithAuthorization:(NSData*)authorization
                                    path:(NSString*)path
                               withReply:(void (^)(bool succeeded))reply
    NS_SWIFT_NAME(removeAppBundle(authorization:path:withReply:));
- (void)finalizeRemovalWithAuthorization:(NSData*)authorization
                               withReply:(void (^)(bool succeeded))reply
    NS_SWIFT_NAME(finalizeRemoval(authorization:withReply:));
- (void)installSystemPkgWithAuthorization:(NSData*)authorization
                                  pkgPath:(NSString*)pkgPath
                             manifestJSON:(NSString*)manifestJSON
                  acceptAudioInterruption:(bool)acceptAudioInterruption
                                withReply:(void (^)(NSString* json))reply
    NS_SWIFT_NAME(installSystemPkg(authorization:pkgPath:manifestJSON:acceptAudioInterruption:withReply:));

@end

NS_ASSUME_NONNULL_END
