# The files of the Mac's ports, named once: the build on a Mac, their execution against doubles and the check of the Mac's
# object format all read this list. Paths are relative to this folder.
set(HALVO_MAC_PLATFORM_SOURCES
  FoundationJSON.mm
  FoundationPropertyList.mm
  FoundationText.mm
  ../JSONNumber.cpp
  JSONExactNumbers.cpp
  JSONNesting.cpp
  PropertyListContainers.cpp
  PropertyListXML.cpp
  SMServiceRegistration.mm
  SystemLog.cpp
  SystemUptime.cpp
  UnicodeText.cpp)

set(HALVO_MAC_SERVICE_SOURCES
  ExportedHandler.mm
  PendingCalls.cpp
  UnavailableInitializer.mm
  XPCIncomingConnection.mm
  XPCLink.mm
  XPCListenerDelegate.mm
  XPCServiceClient.mm
  XPCServiceListener.mm)

# Tests that need no double of the system.
set(HALVO_MAC_TEST_SOURCES
  ExportedHandlerTest.mm
  FoundationTextTest.mm
  ../JSONNumberTest.cpp
  JSONExactNumbersTest.cpp
  JSONNestingTest.cpp
  PendingCallsTest.cpp
  PropertyListContainersTest.cpp
  PropertyListXMLTest.cpp
  UnavailableInitializerTest.mm
  UnicodeTextTest.cpp
  testing/CodeUnitString.mm)

# The promises of the ports' headers, which every implementation keeps.
set(HALVO_MAC_CONTRACT_SOURCES
  ../contract/Answers.cpp
  ../contract/JSONObjectContractTest.cpp
  ../contract/PropertyListContractTest.cpp
  ../contract/ScriptedHandler.cpp
  ../contract/ServiceConnectionContractTest.cpp
  ../contract/ServiceContractTest.cpp
  ../contract/SystemPortsContractTest.cpp
  testing/PublishedMachService.mm)
