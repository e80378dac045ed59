# The few build rules that every folder uses.

# Compile rules of the project's own code: warnings are errors.
add_library(ky_flags INTERFACE)
target_compile_options(ky_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror
  $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-error=maybe-uninitialized>)

if(KY_TIDY)
  find_program(CLANG_TIDY clang-tidy REQUIRED)
  set(CMAKE_CXX_CLANG_TIDY ${CLANG_TIDY} --quiet)
  # Of what moc writes nothing is looked at; clang-tidy wants one check.
  file(WRITE ${CMAKE_BINARY_DIR}/.clang-tidy "Checks: '-*,misc-unused-alias-decls'\n")
endif()

# libFuzzer looks for its way through everything that is built; its programs get its main() in fuzz/.
if(KY_BUILD_FUZZERS)
  set(fuzz_sanitizers -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined)
  add_compile_options(${fuzz_sanitizers})
  add_link_options(${fuzz_sanitizers})
endif()

# One precompiled header for everything that uses the widgets.
add_library(ky_pch OBJECT ${CMAKE_SOURCE_DIR}/cmake/pch.cpp)
target_link_libraries(ky_pch PRIVATE ky_flags Qt6::Widgets Qt6::DBus Qt6::Svg)
target_precompile_headers(ky_pch PRIVATE <QtWidgets> <QtDBus>)
set_target_properties(ky_pch PROPERTIES AUTOMOC OFF)

# ky_module(NAME SOURCES files... USES targets...)
# A folder of a library: an object library which sees only the include folders of what it uses.
function(ky_module name)
  cmake_parse_arguments(ARG "" "" "SOURCES;USES" ${ARGN})
  add_library(${name} OBJECT ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE ky_flags PUBLIC Qt6::Widgets Qt6::DBus Qt6::Svg)
  target_precompile_headers(${name} REUSE_FROM ky_pch)
  foreach(used ${ARG_USES})
    target_include_directories(${name} PUBLIC $<TARGET_PROPERTY:${used},INTERFACE_INCLUDE_DIRECTORIES>)
  endforeach()
endfunction()

# Where the public headers lie: for the installation, and for the test that each of them compiles alone.
set(ky_public_folders platform/core platform/qcop platform/storage platform/pim platform/ui libky/record libky/device
  libky/network libky/postal libky/waitbox libky/widgets)
