// Code signing and Authorization Services, as far as this system uses them.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <Security/Authorization.h>
#include <Security/AuthorizationDB.h>
#include <Security/CSCommon.h>
#include <Security/SecCode.h>
#include <Security/SecRequirement.h>
