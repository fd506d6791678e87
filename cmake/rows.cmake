# SPDX-License-Identifier: Apache-2.0
# Row kernels are written once and compiled once for each instruction set, each
# time into a namespace of its own (lox::<set>). The sets of the target:
option(ORUMLOX_PORTABLE
  "Build the portable form of the row kernels alone: quick to build, slow" OFF)
if(ORUMLOX_PORTABLE)
  set(ORUMLOX_SETS portable)
  target_compile_definitions(orumlox_build_flags INTERFACE LOX_PORTABLE)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64|i.86|x86)$")
  set(ORUMLOX_SETS portable sse41 avx2 avx512)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(arm|aarch64)")
  option(ORUMLOX_TRIM "Leave out the portable form, which never runs here" OFF)
  set(ORUMLOX_SETS portable neon)
  if(ORUMLOX_TRIM)
    set(ORUMLOX_SETS neon)
    target_compile_definitions(orumlox_build_flags INTERFACE LOX_TRIM)
  endif()
else()
  set(ORUMLOX_SETS portable)
endif()
# The lint reads row kernels as few sets see them and links nothing.
if(ORUMLOX_SETS_READ)
  set(ORUMLOX_SETS ${ORUMLOX_SETS_READ})
endif()
set(ORUMLOX_FLAGS_portable "")
set(ORUMLOX_FLAGS_sse41 -msse4.1)
set(ORUMLOX_FLAGS_avx2 -mavx2)
set(ORUMLOX_FLAGS_avx512 -mavx512f -mavx512bw -mavx512dq -mavx512vl)
set(ORUMLOX_FLAGS_neon "")
# GCC leaves instructions in the order of the source on x86 unless told; spread
# out they gain 5 to 10 %, and 2 % more with this processor's costs, which keep
# constants out of the integer registers. Clang does so by itself.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  foreach(set IN ITEMS sse41 avx2 avx512)
    list(APPEND ORUMLOX_FLAGS_${set}
      -fschedule-insns -fsched-pressure -frename-registers -mtune=znver3)
  endforeach()
  # Its own header of AVX-512 makes undefined vectors from themselves.
  list(APPEND ORUMLOX_FLAGS_avx512 -Wno-uninitialized -Wno-maybe-uninitialized)
endif()

# The counters of what ran and the slowest checks of the sanitizers make
# compilation slower, to minutes. All sets compile the same kernels: of the
# vectors SSE4.1 has both, whose kernels are of one width. So has the portable
# form.
if(ORUMLOX_SANITIZE MATCHES "address" AND CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  foreach(set IN ITEMS avx2 avx512)
    list(APPEND ORUMLOX_FLAGS_${set}
      -fno-profile-instr-generate -fno-coverage-mapping
      -fno-sanitize=null,object-size,pointer-overflow)
  endforeach()
endif()

# The set that few families have more: what AVX-512 adds products of words with.
if("avx512" IN_LIST ORUMLOX_SETS)
  set(ORUMLOX_DOT_SET avx512_vnni)
  set(ORUMLOX_FLAGS_avx512_vnni ${ORUMLOX_FLAGS_avx512} -mavx512vnni
    -DLOX_SET_avx512=1)
endif()

set(ORUMLOX_ROW_OBJECTS "")
set(ORUMLOX_ROW_FAMILIES "")
set(ORUMLOX_DOT_FAMILIES "")

# add_rows(family [WITH_DOT] file...): one object library rows_<family>_<set> for
# each set. The caller's ORUMLOX_ROW_OBJECTS and ORUMLOX_ROW_FAMILIES grow by
# them, and ORUMLOX_DOT_FAMILIES by a family that has the dot set, too.
function(add_rows family)
  cmake_parse_arguments(ROWS WITH_DOT "" "" ${ARGN})
  set(sets ${ORUMLOX_SETS})
  if(ROWS_WITH_DOT)
    list(APPEND sets ${ORUMLOX_DOT_SET})
    set(ORUMLOX_DOT_FAMILIES ${ORUMLOX_DOT_FAMILIES} ${family} PARENT_SCOPE)
  endif()
  foreach(set IN LISTS sets)
    set(target rows_${family}_${set})
    add_library(${target} OBJECT ${ROWS_UNPARSED_ARGUMENTS})
    target_compile_definitions(${target} PRIVATE LOX_SET=${set} LOX_SET_${set}=1)
    target_compile_options(${target} PRIVATE ${ORUMLOX_FLAGS_${set}})
    target_link_libraries(${target} PRIVATE orumlox_build_flags)
    set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON)
    list(APPEND ORUMLOX_ROW_OBJECTS $<TARGET_OBJECTS:${target}>)
  endforeach()
  set(ORUMLOX_ROW_OBJECTS ${ORUMLOX_ROW_OBJECTS} PARENT_SCOPE)
  set(ORUMLOX_ROW_FAMILIES ${ORUMLOX_ROW_FAMILIES} ${family} PARENT_SCOPE)
endfunction()
