# The files of the Mac's transport, named once: the build on a Mac, their execution against doubles and the check of the
# Mac's object format all read this list. Paths are relative to this folder.
set(HALVO_MAC_TRANSPORT_SOURCES
  ExportedHandler.mm
  PendingCalls.cpp
  UnavailableInitializer.mm
  XPCIncomingConnection.mm
  XPCLink.mm
  XPCListenerDelegate.mm
  XPCServiceClient.mm
  XPCServiceListener.mm)

# Tests that need no double of the system, and the promises of the headers, which every implementation keeps.
set(HALVO_MAC_TRANSPORT_TESTS
  ../contract/Answers.cpp
  ../contract/ScriptedHandler.cpp
  ../contract/ServiceConnectionContractTest.cpp
  ../contract/ServiceContractTest.cpp
  ExportedHandlerTest.mm
  PendingCallsTest.cpp
  UnavailableInitializerTest.mm
  ../../platform/mac/testing/CodeUnitString.mm
  testing/PublishedMachService.mm)
