// The helper's protocol as NSXPC sees it: ten messages, declared identically by the helper and by the application.
// Both ends compare the compiler's encodings, so that a change of any type here makes messages disappear.
// For Objective-C++ sources only.
#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

// `bool`, never BOOL: BOOL is another type on Intel, and a client built for one processor could not talk to a helper
// built for the other.
@protocol HalvoHelperProtocol

- (void)pingWithReply:(void (^)(NSString* json))reply;
- (void)enumerateActiveGuiDomainsWithReply:(void (^)(NSString* json))reply;

// The first generation, which carries no authorization.
- (void)prepareForRemovalWithAcceptAudioInterruption:(bool)acceptAudioInterruption
                                           withReply:(void (^)(NSString* json))reply;
- (void)removeAppBundleWithPath:(NSString*)path withReply:(void (^)(bool succeeded))reply;
- (void)finalizeRemoval;
- (void)installSystemPkgWithPkgPath:(NSString*)pkgPath
                       manifestJSON:(NSString*)manifestJSON
            acceptAudioInterruption:(bool)acceptAudioInterruption
                          withReply:(void (^)(NSString* json))reply;

// `authorization` is the external form of an authorization reference that holds the administrator right.
- (void)prepareForRemovalWithAuthorization:(NSData*)authorization
                   acceptAudioInterruption:(bool)acceptAudioInterruption
                                 withReply:(void (^)(NSString* json))reply;
- (void)removeAppBundleWithAuthorization:(NSData*)authorization
                                    path:(NSString*)path
                               withReply:(void (^)(bool succeeded))reply;
- (void)finalizeRemovalWithAuthorization:(NSData*)authorization withReply:(void (^)(bool succeeded))reply;
- (void)installSystemPkgWithAuthorization:(NSData*)authorization
                                  pkgPath:(NSString*)pkgPath
                             manifestJSON:(NSString*)manifestJSON
                  acceptAudioInterruption:(bool)acceptAudioInterruption
                                withReply:(void (^)(NSString* json))reply;

@end

NS_ASSUME_NONNULL_END
