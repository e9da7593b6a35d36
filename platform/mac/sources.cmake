# The files of the Mac's ports, named once: the build on a Mac, their execution against doubles and the check of the Mac's
# object format all read these lists. Paths are relative to this folder.
set(HALVO_MAC_JSON_SOURCES
  FoundationJSON.mm
  FoundationText.mm
  ../JSONNumber.cpp
  JSONExactNumbers.cpp
  JSONNesting.cpp
  UnicodeText.cpp)
set(HALVO_MAC_PLATFORM_SOURCES
  FoundationPropertyList.mm
  ../ProcessList.cpp
  PropertyListContainers.cpp
  PropertyListXML.cpp
  SMServiceRegistration.mm
  SystemLog.cpp
  SystemUptime.cpp)

# Tests that need no double of the system, and the promises of the ports' headers, which every implementation keeps.
set(HALVO_MAC_PLATFORM_TESTS
  ../JSONNumberTest.cpp
  ../contract/JSONObjectContractTest.cpp
  ../contract/ProcessListContractTest.cpp
  ../contract/PropertyListContractTest.cpp
  ../contract/SystemPortsContractTest.cpp
  FoundationTextTest.mm
  JSONExactNumbersTest.cpp
  JSONNestingTest.cpp
  PropertyListContainersTest.cpp
  PropertyListXMLTest.cpp
  UnicodeTextTest.cpp
  testing/CodeUnitString.mm)
