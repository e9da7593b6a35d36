#import <ServiceManagement/ServiceManagement.h>

using halvo::sim::serviceManager;

static const NSInteger kNotPermitted = 1;
static const NSInteger kJobNotFound = 6;
static const NSInteger kJobPlistNotFound = 8;
static const NSInteger kAlreadyRegistered = 12;

static BOOL isRegistered(void) {
  return serviceManager.status == SMAppServiceStatusEnabled ||
         serviceManager.status == SMAppServiceStatusRequiresApproval;
}

@implementation SMAppService {
  std::string _plistName;
}

+ (instancetype)daemonServiceWithPlistName:(NSString*)plistName {
  SMAppService* const service = [[SMAppService alloc] init];
  service->_plistName = plistName.UTF8String;
  return service;
}

- (BOOL)isInTheBundle {
  return _plistName == "com.halvo.helper.plist";
}

// Whether the test lets this call go on.
- (BOOL)begin:(const char*)verb error:(NSError**)error {
  serviceManager.calls.push_back(verb + _plistName);
  if (serviceManager.error != nil && error != nullptr) *error = serviceManager.error;
  return serviceManager.error == nil && !serviceManager.failsWithoutError;
}

- (BOOL)end:(NSInteger)code error:(NSError**)error {
  if (code != 0 && error != nullptr) {
    *error = [NSError errorWithDomain:@"SMAppServiceErrorDomain" code:code userInfo:nil];
  }
  return code == 0;
}

- (BOOL)registerAndReturnError:(NSError**)error {
  if (![self begin:"register " error:error]) return NO;
  if (![self isInTheBundle]) return [self end:kJobPlistNotFound error:error];
  if (serviceManager.status == SMAppServiceStatusEnabled) return [self end:kAlreadyRegistered error:error];
  const bool waits = serviceManager.asksAnAdministrator;
  serviceManager.status = waits ? SMAppServiceStatusRequiresApproval : SMAppServiceStatusEnabled;
  return [self end:waits ? kNotPermitted : 0 error:error];
}

- (BOOL)unregisterAndReturnError:(NSError**)error {
  if (![self begin:"unregister " error:error]) return NO;
  if (![self isInTheBundle] || !isRegistered()) return [self end:kJobNotFound error:error];
  serviceManager.status = SMAppServiceStatusNotRegistered;
  return YES;
}

- (SMAppServiceStatus)status {
  serviceManager.calls.push_back("status " + _plistName);
  return [self isInTheBundle] ? serviceManager.status : SMAppServiceStatusNotFound;
}

+ (void)openSystemSettingsLoginItems {
  serviceManager.calls.push_back("open settings");
}

@end
