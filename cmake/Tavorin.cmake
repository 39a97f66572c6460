# What every target of the house shares: language level, warnings, sanitizers, and two helpers that make the
# arrows between the rooms a matter of include paths.

option(TAVORIN_BENCH "Build the benchmark programs" OFF)
option(TAVORIN_WARNINGS_AS_ERRORS "Let no warning pass" ON)
set(TAVORIN_SANITIZE "" CACHE STRING "Sanitizers for the whole build: address,undefined or thread")

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()

find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()

# Two dozen programs with debug symbols of the whole house: the usual linker takes longer than the compiler.
find_program(LLD ld.lld)
if(LLD)
  add_link_options(-fuse-ld=lld)
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual)
if(TAVORIN_WARNINGS_AS_ERRORS)
  add_compile_options(-Werror)
endif()
add_compile_definitions(QT_DEPRECATED_WARNINGS QT_DISABLE_DEPRECATED_BEFORE=0x050E00)
if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
  add_compile_options(-Wthread-safety)
endif()
if(TAVORIN_SANITIZE)
  add_compile_options(-fsanitize=${TAVORIN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TAVORIN_SANITIZE})
endif()

# sdk_library(NAME SOURCES ... USES ... PACKAGES ...): a room of the camera library. Only its own sources see sdk/src,
# and the packages, which pkg-config knows.
function(sdk_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;USES;PACKAGES" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  set(sdk ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/../sdk)
  target_include_directories(${name} PUBLIC ${sdk}/include PRIVATE ${sdk}/src)
  target_link_libraries(${name} PUBLIC ${ARG_USES} Threads::Threads)
  foreach(package ${ARG_PACKAGES})
    string(MAKE_C_IDENTIFIER ${package} id)
    pkg_check_modules(${id} REQUIRED IMPORTED_TARGET ${package})
    target_link_libraries(${name} PRIVATE PkgConfig::${id})
  endforeach()
endfunction()

# widget_library(NAME SOURCES ... USES ...): a room of the viewer. It sees its own folder, the rooms that it uses
# and the public headers of the camera library.
function(widget_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;USES" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  set_target_properties(${name} PROPERTIES AUTOMOC ON AUTOUIC ON AUTOUIC_SEARCH_PATHS ${CMAKE_SOURCE_DIR}/forms)
  target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC norvane Qt5::Widgets Qt5::Concurrent ${ARG_USES})
endfunction()

# tavorin_test(NAME SOURCES ... USES ... [UI] [INTERNAL] [OWN_MAIN] [AUDIT] [TIMEOUT seconds]): one GoogleTest program
# and its CTest entry. UI is for tests of widgets, INTERNAL lets it see sdk/src, OWN_MAIN says that its sources have a
# main(). AUDIT fails it when a camera's node map has cached what its registers do not hold; the builds with sanitizers
# go without, where node maps answer as they do for the user. The suite is started by ./dev test, which gives it a
# screen and a network of its own.
function(tavorin_test name)
  cmake_parse_arguments(ARG "UI;INTERNAL;OWN_MAIN;AUDIT" "TIMEOUT" "SOURCES;USES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_USES} GTest::gmock)
  target_compile_definitions(${name} PRIVATE FIXTURES="${CMAKE_SOURCE_DIR}/tests/fixtures")
  if(ARG_INTERNAL)
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/sdk/src)
  endif()
  if(ARG_UI)
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
    target_link_libraries(${name} PRIVATE Qt5::Test)
  endif()
  if(TAVORIN_SANITIZE)
    target_sources(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests/sanitizers/Suppressions.cpp)
    if(ARG_UI AND TAVORIN_SANITIZE STREQUAL thread)
      target_sources(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests/sanitizers/QtEventOrder.cpp)
    endif()
  endif()
  if(NOT ARG_OWN_MAIN)
    target_link_libraries(${name} PRIVATE GTest::gtest_main)
  endif()
  add_test(NAME ${name} COMMAND ${name} WORKING_DIRECTORY ${CMAKE_BINARY_DIR})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT})
  if(ARG_AUDIT AND NOT TAVORIN_SANITIZE)
    set_tests_properties(${name} PROPERTIES ENVIRONMENT NORVANE_CACHE_AUDIT=1
                                            FAIL_REGULAR_EXPRESSION "cached state is not what the port holds")
  endif()
endfunction()
