# Shared build settings: warnings, sanitizers and third-party targets.

# msgpack-c is used header-only and without Boost; Debian's config package
# would drag Boost in, so the include directory is found directly.
find_path(MSGPACK_INCLUDE_DIR msgpack.hpp REQUIRED)
add_library(zelto_msgpack INTERFACE)
target_include_directories(zelto_msgpack SYSTEM INTERFACE ${MSGPACK_INCLUDE_DIR})
target_compile_definitions(zelto_msgpack INTERFACE MSGPACK_NO_BOOST MSGPACK_DEFAULT_API_VERSION=3)

# The Apple half of the logger is Objective-C++. The language is enabled here,
# in the top directory, because the plug-in that links the logger's objects
# lives in another directory than the logger.
if(APPLE)
  enable_language(OBJCXX)
endif()

if(ZELTO_SANITIZE)
  # Halt on the first error of any sanitizer.
  add_compile_options(-fsanitize=${ZELTO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${ZELTO_SANITIZE})
endif()
# Fuzzing: every object carries libFuzzer's coverage counters, so that inputs
# reaching new code in the plug-ins count as progress too; only the harness
# programs link libFuzzer's main (fuzz/CMakeLists.txt).
if(ZELTO_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# Project code: strict warnings. Applied per target so that third-party code
# is not held to them. They are errors only where asked for (the presets and
# CI): a packager's compiler may warn about things ours does not, and that
# must not stop their build.
option(ZELTO_WARNINGS_AS_ERRORS "Treat compiler warnings in project code as errors" OFF)
function(zelto_project_target target)
  target_compile_options(${target} PRIVATE -Wall -Wextra)
  if(ZELTO_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()

# Component code: strict warnings, no floating-point contraction (identical
# float results on x86-64 and arm64), hidden symbols.
function(zelto_component_target target)
  zelto_project_target(${target})
  target_compile_options(${target} PRIVATE -ffp-contract=off)
  set_target_properties(${target} PROPERTIES
    CXX_VISIBILITY_PRESET hidden
    OBJCXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
endfunction()

# A plug-in lets only CreateComponent and DestroyComponent out, and every
# symbol it uses must resolve when it is linked, not when a host loads it.
# The list of exports sits beside the plug-in's CMakeLists.txt in the form its
# linker reads: exports.map (a version script) for GNU-like linkers,
# exported_symbols.txt (names as Apple's linker spells them, with a leading
# underscore) on Apple, whose linker already refuses undefined symbols in a
# library by default.
include(CheckLinkerFlag)
function(zelto_plugin_exports target)
  if(APPLE)
    set(exports ${CMAKE_CURRENT_SOURCE_DIR}/exported_symbols.txt)
    target_link_options(${target} PRIVATE "LINKER:-exported_symbols_list,${exports}")
  else()
    set(exports ${CMAKE_CURRENT_SOURCE_DIR}/exports.map)
    check_linker_flag(CXX "LINKER:--version-script=${exports},--no-undefined"
      ZELTO_LINKER_IS_GNU_LIKE)
    if(NOT ZELTO_LINKER_IS_GNU_LIKE)
      message(FATAL_ERROR "${target}: the linker takes neither a version script nor "
        "--no-undefined, so the plug-in cannot be limited to its two entry points")
    endif()
    # Clang links a sanitizer's runtime into programs only, so a sanitized
    # plug-in leaves the runtime's symbols to the program that loads it.
    set(no_undefined ",--no-undefined")
    if(ZELTO_SANITIZE AND CMAKE_CXX_COMPILER_ID MATCHES "Clang")
      set(no_undefined "")
    endif()
    target_link_options(${target} PRIVATE "LINKER:--version-script=${exports}${no_undefined}")
  endif()
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${exports})
endfunction()
