# SPDX-License-Identifier: Apache-2.0
# Flags shared by every unit, and the sanitizer switch.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_C_EXTENSIONS OFF)
set(THREADS_PREFER_PTHREAD_FLAG ON)
if(NOT TARGET Threads::Threads)
  find_package(Threads REQUIRED)
  # What links the static library needs it, in whatever folder it is.
  set_target_properties(Threads::Threads PROPERTIES IMPORTED_GLOBAL ON)
endif()

set(ORUMLOX_SANITIZE "" CACHE STRING "Sanitizers to build with, e.g. address,undefined")
if(ORUMLOX_SANITIZE)
  add_compile_options(-fsanitize=${ORUMLOX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -g1)
  add_link_options(-fsanitize=${ORUMLOX_SANITIZE})
  add_compile_definitions(LOX_SANITIZED)
endif()

# What scripts/coverage.sh prints.
option(ORUMLOX_COVERAGE "Count the lines and branches that run, with clang" OFF)
if(ORUMLOX_COVERAGE)
  add_compile_options(-fprofile-instr-generate -fcoverage-mapping)
  add_link_options(-fprofile-instr-generate)
endif()

add_library(orumlox_warnings INTERFACE)
target_compile_options(orumlox_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wcast-qual -Wconversion -Wno-sign-conversion
  -Wno-psabi)
option(ORUMLOX_WERROR "Treat warnings as errors" OFF)
if(ORUMLOX_WERROR)
  target_compile_options(orumlox_warnings INTERFACE -Werror)
endif()

# With sanitizers row kernels and tests would take minutes to optimise
# further.
set(optimisation -O3)
if(ORUMLOX_SANITIZE)
  set(optimisation -O1)
  set(CMAKE_C_FLAGS_RELEASE "-O1 -DNDEBUG")
  set(CMAKE_CXX_FLAGS_RELEASE "-O1 -DNDEBUG")
endif()
set(ORUMLOX_OPTIMISATION ${optimisation} CACHE STRING
  "The library's level of optimisation; bytes do not depend on it")

# What the library's own units are compiled with. Without contraction a float
# expression gives the same bytes on every target; i386 would else compute in
# x87 extra precision.
add_library(orumlox_build_flags INTERFACE)
target_link_libraries(orumlox_build_flags INTERFACE orumlox_warnings)
target_include_directories(orumlox_build_flags INTERFACE
  ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/include)
target_compile_options(orumlox_build_flags INTERFACE
  ${ORUMLOX_OPTIMISATION} -ffp-contract=off -fvisibility=hidden
  -ffunction-sections -fdata-sections
  $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti -fno-threadsafe-statics
    -fvisibility-inlines-hidden>)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(i.86|x86)$")
  target_compile_options(orumlox_build_flags INTERFACE -msse2 -mfpmath=sse)
endif()
# The Android log is linked there and nowhere else.
set(ORUMLOX_ANDROID_LOG "")
if(ANDROID)
  set(ORUMLOX_ANDROID_LOG log)
endif()
