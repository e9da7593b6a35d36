# The tests of service front, security and text, with the doubles that they need.
if(DEFINED BUILD_TESTING AND NOT BUILD_TESTING)
  return()
endif()

set(HALVO_SERVICE_SECURITY_TESTS
  security/AdminRightTest.cpp
  security/PkgDistrustTest.cpp
  security/PkgFingerprintTest.cpp
  security/PkgSignatureTest.cpp
  security/PkgTrustPropertyTest.cpp
  security/PkgTrustReportTest.cpp
  security/PkgTrustTest.cpp
  security/PkgVerifierTest.cpp
  service/ActivityTrackerTest.cpp
  service/HelperHandlerCountingTest.cpp
  service/HelperHandlerTest.cpp
  testing/ScriptedProcessRunner.cpp
  text/TextTest.cpp)

# The answers of Authorization Services and of the code-signing services are scripted through the simulated framework.
if(NOT APPLE)
  list(APPEND HALVO_SERVICE_SECURITY_TESTS
    security/AdminRightRegistrationTest.cpp
    security/CFTextTest.cpp
    security/RealAdminAuthorizerTest.cpp
    security/SecCodeClientValidatorCallsTest.cpp
    security/SecCodeClientValidatorTest.cpp
    testing/SignedProcess.cpp)
endif()

# Property tests.
find_package(rapidcheck REQUIRED)
set(HALVO_SERVICE_SECURITY_TEST_LIBRARIES rapidcheck)

# Counts what the report parser does: a build of it with a hook in every basic block, and a linker that can redirect
# its searches.
if(NOT APPLE)
  add_library(halvo_counted_parser OBJECT security/PkgSignature.cpp text/Text.cpp)
  target_link_libraries(halvo_counted_parser PRIVATE halvo_flags)
  target_compile_options(halvo_counted_parser PRIVATE -fsanitize-coverage=trace-pc)
  halvo_test(HalvoReportCostTest
    SOURCES
      security/PkgSignatureCostTest.cpp
      $<TARGET_OBJECTS:halvo_counted_parser>)
  target_link_options(HalvoReportCostTest PRIVATE -Wl,--wrap=memchr)
  # GCC looks into the test's own allocation functions once it optimises and then misses that they belong together.
  target_compile_options(HalvoReportCostTest PRIVATE -Wno-mismatched-new-delete)
endif()
