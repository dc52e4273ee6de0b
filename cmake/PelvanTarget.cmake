# One folder is one target. A target sees only the folders that it names in USES: each folder is
# reached through an include directory of its own, which holds nothing but a link to it, and targets
# are linked privately, so that nothing is seen through another.

# Lets whoever uses the target include the files of its folder, as "serial/link.h".
function(pelvan_offer_folder target)
  file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR}/src ${CMAKE_CURRENT_SOURCE_DIR})
  set(root ${PROJECT_BINARY_DIR}/include/${target})
  get_filename_component(parent ${root}/${folder} DIRECTORY)
  file(MAKE_DIRECTORY ${parent})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${root}/${folder} SYMBOLIC)
  target_include_directories(${target} PUBLIC ${root})
endfunction()

# pelvan_use(pelvan7_trend HEADERS logging platform): links the folders' targets, or with HEADERS
# only lets their files be included, for modules that find the code in the program.
function(pelvan_use target)
  cmake_parse_arguments(ARG "HEADERS" "" "" ${ARGN})
  foreach(used ${ARG_UNPARSED_ARGUMENTS})
    if(ARG_HEADERS)
      target_include_directories(${target} PRIVATE
        $<TARGET_PROPERTY:pelvan_${used},INTERFACE_INCLUDE_DIRECTORIES>)
    else()
      target_link_libraries(${target} PRIVATE pelvan_${used})
    endif()
  endforeach()
endfunction()

# Warnings and sanitizers, the same for every target.
function(pelvan_compile_options target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
                         -Wsign-conversion -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual)
  # GCC 12 sees overlaps that cannot be in "text" + std::string() once it inlines (its bug 105651).
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${target} PRIVATE -Wno-restrict)
  else()
    # A module's one function returns a C++ type: it is only ever called by the program that it was built with.
    target_compile_options(${target} PRIVATE -Wno-return-type-c-linkage)
  endif()
  if(PELVAN_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(PELVAN_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=address,undefined -fno-omit-frame-pointer
                           -fno-sanitize-recover=undefined)
    target_link_options(${target} PRIVATE -fsanitize=address,undefined)
  endif()
endfunction()

# Headers of libraries that nearly every source of a target includes: PRIVATE <header>..., or
# REUSE_FROM another target.
function(pelvan_precompile target)
  if(PELVAN_PRECOMPILE)
    target_precompile_headers(${target} ${ARGN})
  endif()
endfunction()

# The standard library's headers, for the libraries that bring none of their own to precompile.
if(PELVAN_PRECOMPILE)
  file(GENERATE OUTPUT ${PROJECT_BINARY_DIR}/standard_headers.cpp CONTENT "")
  add_library(pelvan_standard_headers OBJECT ${PROJECT_BINARY_DIR}/standard_headers.cpp)
  pelvan_compile_options(pelvan_standard_headers)
  pelvan_precompile(pelvan_standard_headers PRIVATE <algorithm> <array> <cmath> <cstdint> <filesystem> <functional>
                    <map> <memory> <optional> <string> <string_view> <utility> <vector>)
endif()

# pelvan_library(serial SOURCES channel_table.cpp ... USES config platform text)
# SMALL: built for size; for forms, windows and commands, which wait for people and for the line.
# OWN_HEADERS: the target says itself which headers it precompiles.
function(pelvan_library name)
  cmake_parse_arguments(ARG "SMALL;OWN_HEADERS" "" "SOURCES;USES" ${ARGN})
  add_library(pelvan_${name} STATIC ${ARG_SOURCES})
  pelvan_offer_folder(pelvan_${name})
  pelvan_compile_options(pelvan_${name})
  if(ARG_SMALL)
    target_compile_options(pelvan_${name} PRIVATE $<$<CONFIG:Release>:-Os>)
  endif()
  pelvan_use(pelvan_${name} ${ARG_USES})
  if(NOT ARG_OWN_HEADERS)
    pelvan_precompile(pelvan_${name} REUSE_FROM pelvan_standard_headers)
  endif()
endfunction()

# A library beside the program, loaded on first use: the start pays nothing for what it links.
function(pelvan_module name)
  cmake_parse_arguments(ARG "" "" "SOURCES;USES;LINKS" ${ARGN})
  add_library(${name} MODULE ${ARG_SOURCES})
  pelvan_compile_options(${name})
  pelvan_use(${name} HEADERS ${ARG_USES})
  target_compile_definitions(${name} PRIVATE QT_NO_KEYWORDS)
  target_link_libraries(${name} PRIVATE ${ARG_LINKS})
  set_target_properties(${name} PROPERTIES CXX_VISIBILITY_PRESET hidden
                        LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/pelvan7)
  if(PELVAN_SANITIZE)
    # The check of virtual calls wants the type's own data, which is in the program and not here.
    target_compile_options(${name} PRIVATE -fno-sanitize=vptr)
  endif()
endfunction()

# Options of a target that holds tests: what they call is built with all sanitizers; in the tests
# themselves the check of undefined behaviour would cost a third of the time that they take to compile.
function(pelvan_test_options target)
  pelvan_compile_options(${target})
  if(PELVAN_SANITIZE)
    target_compile_options(${target} PRIVATE -fno-sanitize=undefined)
  endif()
endfunction()

# pelvan_test(serial SOURCES transmit_test.cpp ... USES serial support)
# OWN_MAIN: a source brings main() itself, as tests of windows do.
function(pelvan_test name)
  cmake_parse_arguments(ARG "OWN_MAIN" "" "SOURCES;USES;DEFINES;PRECOMPILE" ${ARGN})
  add_executable(${name}_tests ${ARG_SOURCES})
  target_include_directories(${name}_tests PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_compile_definitions(${name}_tests PRIVATE ${ARG_DEFINES})
  pelvan_test_options(${name}_tests)
  pelvan_use(${name}_tests ${ARG_USES})
  if(ARG_OWN_MAIN)
    target_link_libraries(${name}_tests PRIVATE GTest::gtest)
    pelvan_precompile(${name}_tests PRIVATE <gtest/gtest.h> ${ARG_PRECOMPILE})
  else()
    target_link_libraries(${name}_tests PRIVATE GTest::gtest_main)
    pelvan_precompile(${name}_tests REUSE_FROM pelvan_test_headers)
  endif()
  gtest_discover_tests(${name}_tests DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120)
endfunction()
