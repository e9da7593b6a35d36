# The core logic's tests, with the doubles and small programs that they need.

# Doubles and whatever else tests of every module share.
halvo_library(halvo_testing
  SOURCES
    testing/DeepTree.cpp
    testing/FaultJudge.cpp
    testing/FaultMatrix.cpp
    testing/Faults.cpp
    testing/FifoEnds.cpp
    testing/FileState.cpp
    testing/FileTree.cpp
    testing/FixedAudioDevices.cpp
    testing/InMemoryPrivilegedFS.cpp
    testing/InstallBench.cpp
    testing/InstallFaultJudge.cpp
    testing/InstallMachine.cpp
    testing/LockedItem.cpp
    testing/ProcessState.cpp
    testing/ScriptedPrivilegedFS.cpp
    testing/ScriptedProcessRunner.cpp
    testing/TemporaryDirectory.cpp
    testing/TreeSwapper.cpp
    testing/UninstallFaultJudge.cpp
  PUBLIC HalvoHelper)

# The matrix of faults runs thousands of installs in memory, and the interleavings more.
set_source_files_properties(
  testing/FaultMatrix.cpp testing/Faults.cpp testing/FileTree.cpp testing/InMemoryPrivilegedFS.cpp
  testing/InstallMachine.cpp testing/ScriptedPrivilegedFS.cpp testing/TemporaryDirectory.cpp
  PROPERTIES COMPILE_OPTIONS -O2)

set(tests
  install/InstallFaultMatrixTest.cpp
  install/InstallPruningTest.cpp
  install/InstallRecoveryTest.cpp
  install/InstallRefusalTest.cpp
  install/InstallResultTest.cpp
  install/InstallSequenceTest.cpp
  install/InstallSnapshotTest.cpp
  install/InstallerTest.cpp
  install/VersionsTest.cpp
  removal/AppBundleGuardTest.cpp
  removal/AppBundleRemovalTest.cpp
  removal/FinalRemovalTest.cpp
  removal/UninstallFaultMatrixTest.cpp
  removal/UninstallResultTest.cpp
  removal/UninstallSequenceTest.cpp
  security/AdminRightTest.cpp
  security/PkgDistrustTest.cpp
  security/PkgFingerprintTest.cpp
  security/PkgSignatureTest.cpp
  security/PkgTrustReportTest.cpp
  security/PkgTrustTest.cpp
  security/PkgVerifierTest.cpp
  service/ActivityTrackerTest.cpp
  service/HelperHandlerCountingTest.cpp
  service/HelperHandlerTest.cpp
  system/AudioActivityTest.cpp
  system/BoundedCopyTest.cpp
  system/CopyContractTest.cpp
  system/CopyTreeTest.cpp
  system/InheritedStateTest.cpp
  system/LaunchctlTest.cpp
  system/LoginUsersTest.cpp
  system/PathStringsTest.cpp
  system/PkgutilTest.cpp
  system/PrivilegedFSContractTest.cpp
  system/RealPrivilegedFSTest.cpp
  system/RealProcessRunnerTest.cpp
  system/RemoveDeepTreeTest.cpp
  system/RemoveLockedTreeTest.cpp
  system/RemoveTreeTest.cpp
  system/StageFileTest.cpp
  system/UniqueDescriptorTest.cpp
  text/TextTest.cpp)

# Where the system's frameworks are simulated, their answers can be scripted, and small disks can be mounted.
if(NOT APPLE)
  list(APPEND tests
    install/FaultsOnDiskTest.cpp
    install/InstallOnFullDiskTest.cpp
    install/InstallOnSmallDiskTest.cpp
    security/AdminRightRegistrationTest.cpp
    security/CFTextTest.cpp
    security/RealAdminAuthorizerTest.cpp
    security/SecCodeClientValidatorCallsTest.cpp
    security/SecCodeClientValidatorTest.cpp
    system/CopyTreeCallsTest.cpp
    system/CoreAudioDeviceEnumeratorTest.cpp
    system/RealIdleSleepTest.cpp
    testing/SignedProcess.cpp)
endif()

# A Mac's file system takes no name that is not UTF-8.
if(NOT APPLE)
  list(APPEND tests system/IllFormedFileNamesTest.cpp)
endif()

# Property tests, where their library is at hand: it is packaged for Linux only.
if(APPLE)
  find_package(rapidcheck QUIET)
else()
  find_package(rapidcheck REQUIRED)
endif()
set(libraries halvo_testing)
if(rapidcheck_FOUND)
  list(APPEND tests
    security/PkgSignaturePropertyTest.cpp
    security/PkgTrustPropertyTest.cpp
    text/TextPropertyTest.cpp)
  list(APPEND libraries rapidcheck)
endif()

# Small programs that the tests start as child processes.
halvo_executable(halvo_child_report SOURCES testing/ChildReport.cpp)
halvo_executable(halvo_fault_matrix SOURCES testing/FaultMatrixPage.cpp PRIVATE halvo_testing)
halvo_executable(halvo_file_probe SOURCES testing/FileProbe.cpp PRIVATE HalvoHelper)
halvo_executable(halvo_install_probe SOURCES testing/InstallProbe.cpp PRIVATE halvo_testing)
halvo_executable(halvo_runner_probe SOURCES testing/RunnerProbe.cpp PRIVATE HalvoHelper)

halvo_test(HalvoHelperTest SOURCES ${tests} PRIVATE ${libraries})
target_compile_definitions(HalvoHelperTest PRIVATE
  HALVO_CHILD_REPORT="$<TARGET_FILE:halvo_child_report>"
  HALVO_FILE_PROBE="$<TARGET_FILE:halvo_file_probe>"
  HALVO_INSTALL_PROBE="$<TARGET_FILE:halvo_install_probe>"
  HALVO_RUNNER_PROBE="$<TARGET_FILE:halvo_runner_probe>")
add_dependencies(HalvoHelperTest halvo_child_report halvo_file_probe halvo_install_probe halvo_runner_probe)

# Fills and remounts a disk of its own.
if(NOT APPLE)
  halvo_executable(halvo_small_disk_probe SOURCES testing/SmallDiskProbe.cpp PRIVATE halvo_testing)
  target_compile_definitions(HalvoHelperTest PRIVATE HALVO_SMALL_DISK_PROBE="$<TARGET_FILE:halvo_small_disk_probe>")
  add_dependencies(HalvoHelperTest halvo_small_disk_probe)
endif()

if(NOT APPLE)
  # The page on faults is what its program prints.
  add_test(NAME docs.fault-matrix
    COMMAND sh -c "page=\$(\"\$1\") && printf '%s\\n' \"\$page\" | diff -u \"\$2\" -" sh
      $<TARGET_FILE:halvo_fault_matrix> "${PROJECT_SOURCE_DIR}/docs/fault-matrix.md")
endif()

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

# Tests of what happens when a system call fails. The linker leads the named calls of the whole program through
# testing/SystemCallFaults.cpp.
if(NOT APPLE)
  halvo_test(HalvoHelperFaultTest
    SOURCES
      system/PrivilegedFSFaultTest.cpp
      system/RealProcessRunnerFaultTest.cpp
      system/RemoveTreeFaultTest.cpp
      testing/SpawnFaults.cpp
      testing/SystemCallFaults.cpp
      testing/SystemCallFaultsTest.cpp
    PRIVATE halvo_testing)
  target_compile_definitions(HalvoHelperFaultTest PRIVATE HALVO_CHILD_REPORT="$<TARGET_FILE:halvo_child_report>")
  add_dependencies(HalvoHelperFaultTest halvo_child_report)
  set(faulty_calls
    chmod close fcntl fdopendir fstat fstatat lstat open openat pipe pread read readdir unlink unlinkat waitpid write)
  foreach(call IN ITEMS
      posix_spawn
      posix_spawn_file_actions_adddup2
      posix_spawn_file_actions_addinherit_np
      posix_spawn_file_actions_addopen
      posix_spawn_file_actions_destroy
      posix_spawn_file_actions_init
      posix_spawnattr_destroy
      posix_spawnattr_init
      posix_spawnattr_setflags
      posix_spawnattr_setpgroup
      posix_spawnattr_setsigdefault
      posix_spawnattr_setsigmask)
    list(APPEND faulty_calls halvo_sim_${call})
  endforeach()
  list(TRANSFORM faulty_calls PREPEND "-Wl,--wrap=")
  # The C++ library's own calls, such as the reading of a directory, take the same road where it is linked in.
  target_link_options(HalvoHelperFaultTest PRIVATE ${faulty_calls} -static-libstdc++)
endif()
