#import <ServiceManagement/ServiceManagement.h>

static const NSInteger kJobNotFound = 6;

static NSError* gError;
static BOOL gFailsWithoutError;
static NSMutableArray<NSString*>* gPlistNames;

@implementation SMAppService {
  NSString* _plistName;
}

+ (instancetype)daemonServiceWithPlistName:(NSString*)plistName {
  SMAppService* const service = [[SMAppService alloc] init];
  service->_plistName = [plistName copy];
  return service;
}

- (BOOL)unregisterAndReturnError:(NSError**)error {
  if (gPlistNames == nil) gPlistNames = [NSMutableArray array];
  [gPlistNames addObject:_plistName];
  if (gFailsWithoutError) return NO;
  NSError* failure = gError;
  if (failure == nil && ![_plistName isEqualToString:@"com.halvo.helper.plist"]) {
    failure = [NSError errorWithDomain:@"SMAppServiceErrorDomain" code:kJobNotFound userInfo:nil];
  }
  if (failure != nil && error != nullptr) *error = failure;
  return failure == nil;
}

+ (void)setScriptedError:(NSError*)error {
  gError = error;
}

+ (NSError*)scriptedError {
  return gError;
}

+ (void)setFailsWithoutError:(BOOL)fails {
  gFailsWithoutError = fails;
}

+ (BOOL)failsWithoutError {
  return gFailsWithoutError;
}

+ (NSArray<NSString*>*)unregisteredPlistNames {
  return gPlistNames == nil ? @[] : [gPlistNames copy];
}

+ (void)reset {
  gError = nil;
  gFailsWithoutError = NO;
  gPlistNames = nil;
}

@end
