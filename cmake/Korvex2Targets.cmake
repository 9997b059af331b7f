# Shared ways of declaring the project's targets: compiler settings, rooms of the module, test programs.

# Settings that every target of the project compiles with.
function(korvex2_compile_settings target)
  target_compile_features(${target} PUBLIC cxx_std_17)
  set_target_properties(${target} PROPERTIES
    CXX_EXTENSIONS OFF
    POSITION_INDEPENDENT_CODE ON)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion)
  if(KORVEX2_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(KORVEX2_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${KORVEX2_SANITIZE} -fno-omit-frame-pointer)
    target_link_options(${target} PUBLIC -fsanitize=${KORVEX2_SANITIZE})
  endif()
endfunction()

# A room of the module: one folder, one static library, its folder on the include path of whoever links it.
#   korvex2_add_room(NAME SOURCES file... DEPENDS target...)
# A room sees only what it names under DEPENDS, so a wrong include does not compile.
function(korvex2_add_room name)
  cmake_parse_arguments(PARSE_ARGV 1 room "" "" "SOURCES;DEPENDS")
  add_library(${name} STATIC ${room_SOURCES})
  set_target_properties(${name} PROPERTIES AUTOMOC ON AUTOUIC ON)
  target_include_directories(${name} PUBLIC "$<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}>")
  target_link_libraries(${name} PUBLIC ${room_DEPENDS})
  korvex2_compile_settings(${name})
endfunction()

# A test program of GoogleTest cases, each case a CTest test.
#   korvex2_add_test(NAME LABEL unit|gui|gl|process SOURCES file... LIBRARIES target...)
# Cases that need a display share one, so they take turns.
function(korvex2_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 test "" "LABEL" "SOURCES;LIBRARIES")
  add_executable(${name} ${test_SOURCES})
  set_target_properties(${name} PROPERTIES AUTOMOC ON)
  target_link_libraries(${name} PRIVATE ${test_LIBRARIES} korvex2_test_support GTest::gtest GTest::gmock)
  korvex2_compile_settings(${name})
  set(properties LABELS "${test_LABEL}" TIMEOUT 120)
  if(NOT test_LABEL STREQUAL "unit")
    list(APPEND properties RESOURCE_LOCK display)
  endif()
  include(GoogleTest)
  gtest_discover_tests(${name} TEST_PREFIX "${name}/" DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
                       PROPERTIES ${properties})
endfunction()
