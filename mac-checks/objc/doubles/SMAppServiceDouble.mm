#import <ServiceManagement/ServiceManagement.h>

static const NSInteger kNotPermitted = 1;
static const NSInteger kJobNotFound = 6;
static const NSInteger kJobPlistNotFound = 8;
static const NSInteger kAlreadyRegistered = 12;

static SMAppServiceStatus gStatus;
static BOOL gAsksAnAdministrator;
static NSError* gError;
static BOOL gFailsWithoutError;
static NSMutableArray<NSString*>* gCalls;

static BOOL isRegistered(void) {
  return gStatus == SMAppServiceStatusEnabled || gStatus == SMAppServiceStatusRequiresApproval;
}

@implementation SMAppService {
  NSString* _plistName;
}

+ (instancetype)daemonServiceWithPlistName:(NSString*)plistName {
  SMAppService* const service = [[SMAppService alloc] init];
  service->_plistName = [plistName copy];
  return service;
}

- (BOOL)isInTheBundle {
  return [_plistName isEqualToString:@"com.halvo.helper.plist"];
}

+ (void)note:(NSString*)call {
  if (gCalls == nil) gCalls = [NSMutableArray array];
  [gCalls addObject:call];
}

// Whether the test lets this call go on.
- (BOOL)begin:(NSString*)verb error:(NSError**)error {
  [SMAppService note:[NSString stringWithFormat:@"%@ %@", verb, _plistName]];
  if (gError != nil && error != nullptr) *error = gError;
  return gError == nil && !gFailsWithoutError;
}

- (BOOL)end:(NSInteger)code error:(NSError**)error {
  if (code != 0 && error != nullptr) {
    *error = [NSError errorWithDomain:@"SMAppServiceErrorDomain" code:code userInfo:nil];
  }
  return code == 0;
}

- (BOOL)registerAndReturnError:(NSError**)error {
  if (![self begin:@"register" error:error]) return NO;
  if (![self isInTheBundle]) return [self end:kJobPlistNotFound error:error];
  if (gStatus == SMAppServiceStatusEnabled) return [self end:kAlreadyRegistered error:error];
  gStatus = gAsksAnAdministrator ? SMAppServiceStatusRequiresApproval : SMAppServiceStatusEnabled;
  return [self end:gAsksAnAdministrator ? kNotPermitted : 0 error:error];
}

- (BOOL)unregisterAndReturnError:(NSError**)error {
  if (![self begin:@"unregister" error:error]) return NO;
  if (![self isInTheBundle] || !isRegistered()) return [self end:kJobNotFound error:error];
  gStatus = SMAppServiceStatusNotRegistered;
  return YES;
}

- (SMAppServiceStatus)status {
  [SMAppService note:[@"status " stringByAppendingString:_plistName]];
  return [self isInTheBundle] ? gStatus : SMAppServiceStatusNotFound;
}

+ (void)openSystemSettingsLoginItems {
  [SMAppService note:@"open settings"];
}

+ (SMAppServiceStatus)statusOfTheHelper {
  return gStatus;
}

+ (void)setStatusOfTheHelper:(SMAppServiceStatus)status {
  gStatus = status;
}

+ (BOOL)asksAnAdministrator {
  return gAsksAnAdministrator;
}

+ (void)setAsksAnAdministrator:(BOOL)asks {
  gAsksAnAdministrator = asks;
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

+ (NSArray<NSString*>*)calls {
  return gCalls == nil ? @[] : [gCalls copy];
}

+ (void)reset {
  gStatus = SMAppServiceStatusNotRegistered;
  gAsksAnAdministrator = NO;
  gError = nil;
  gFailsWithoutError = NO;
  gCalls = nil;
}

@end
