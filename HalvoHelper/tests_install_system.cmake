# The tests of install, removal and the system adapters, with the doubles that only they need.
set(HALVO_INSTALL_SYSTEM_TESTS
  install/InstallPruningTest.cpp
  install/InstallRecoveryTest.cpp
  install/InstallRefusalTest.cpp
  install/InstallResultTest.cpp
  install/InstallSequenceTest.cpp
  install/InstallerTest.cpp
  install/VersionsTest.cpp
  removal/AppBundleGuardTest.cpp
  removal/AppBundleRemovalTest.cpp
  removal/FinalRemovalTest.cpp
  removal/UninstallResultTest.cpp
  removal/UninstallSequenceTest.cpp
  system/AudioActivityTest.cpp
  system/BoundedCopyTest.cpp
  system/CopyTreeTest.cpp
  system/LaunchctlTest.cpp
  system/LoginUsersTest.cpp
  system/PathStringsTest.cpp
  system/PkgutilTest.cpp
  system/RealPrivilegedFSTest.cpp
  system/RealProcessRunnerTest.cpp
  system/RemoveTreeTest.cpp
  system/StageFileTest.cpp
  testing/FifoEnds.cpp
  testing/FileState.cpp
  testing/FixedAudioDevices.cpp
  testing/InMemoryPrivilegedFS.cpp
  testing/InstallBench.cpp
  testing/InstallMachine.cpp
  testing/ProcessState.cpp
  testing/ScriptedPrivilegedFS.cpp
  testing/TemporaryDirectory.cpp
  testing/TreeSwapper.cpp)

# The audio hardware's answers are scripted through the simulated framework.
if(NOT APPLE)
  list(APPEND HALVO_INSTALL_SYSTEM_TESTS system/CoreAudioDeviceEnumeratorTest.cpp)
endif()

# Small programs that the tests start as child processes.
halvo_executable(halvo_child_report SOURCES testing/ChildReport.cpp)
halvo_executable(halvo_file_probe SOURCES testing/FileProbe.cpp PRIVATE HalvoHelper)

# Makes those programs known to a test program.
function(halvo_use_install_system_test_tools target)
  target_compile_definitions(${target} PRIVATE
    HALVO_CHILD_REPORT="$<TARGET_FILE:halvo_child_report>"
    HALVO_FILE_PROBE="$<TARGET_FILE:halvo_file_probe>")
  add_dependencies(${target} halvo_child_report halvo_file_probe)
endfunction()
