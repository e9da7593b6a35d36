// Turns CoreFoundation objects into JSON and back; files of the simulation hold JSON.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <nlohmann/json_fwd.hpp>

#include "sim/frameworks/corefoundation/Object.h"

namespace halvo::sim {

// Strings, booleans, numbers and dictionaries with text as keys; anything else becomes null.
nlohmann::json jsonFrom(CFTypeRef object);

// Null for what has no counterpart: JSON null and arrays. Members without one are left out of their dictionary.
OwnedObject objectFrom(const nlohmann::json& json);

}  // namespace halvo::sim
