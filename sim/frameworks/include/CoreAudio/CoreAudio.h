// The audio hardware layer: properties of the system object and of its devices.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

typedef UInt32 AudioObjectID;
typedef AudioObjectID AudioDeviceID;
typedef UInt32 AudioObjectPropertySelector;
typedef UInt32 AudioObjectPropertyScope;
typedef UInt32 AudioObjectPropertyElement;

struct AudioObjectPropertyAddress {
  AudioObjectPropertySelector mSelector;
  AudioObjectPropertyScope mScope;
  AudioObjectPropertyElement mElement;
};
typedef struct AudioObjectPropertyAddress AudioObjectPropertyAddress;

enum : AudioObjectID {
  kAudioObjectUnknown = 0,
  kAudioObjectSystemObject = 1,
};

// Four characters each, packed into a number: 'dev#', 'gone'; 'glob'.
enum : AudioObjectPropertySelector {
  kAudioHardwarePropertyDevices = 0x64657623,
  kAudioDevicePropertyDeviceIsRunningSomewhere = 0x676F6E65,
};
enum : AudioObjectPropertyScope { kAudioObjectPropertyScopeGlobal = 0x676C6F62 };
enum : AudioObjectPropertyElement { kAudioObjectPropertyElementMain = 0 };

// 'stop', 'what', 'who?', '!siz', '!obj'
enum : OSStatus {
  kAudioHardwareNoError = 0,
  kAudioHardwareNotRunningError = 0x73746F70,
  kAudioHardwareUnspecifiedError = 0x77686174,
  kAudioHardwareUnknownPropertyError = 0x77686F3F,
  kAudioHardwareBadPropertySizeError = 0x2173697A,
  kAudioHardwareBadObjectError = 0x216F626A,
};

extern "C" {

OSStatus AudioObjectGetPropertyDataSize(AudioObjectID inObjectID, const AudioObjectPropertyAddress* inAddress,
                                        UInt32 inQualifierDataSize, const void* inQualifierData, UInt32* outDataSize);
OSStatus AudioObjectGetPropertyData(AudioObjectID inObjectID, const AudioObjectPropertyAddress* inAddress,
                                    UInt32 inQualifierDataSize, const void* inQualifierData, UInt32* ioDataSize,
                                    void* outData);

}  // extern "C"
