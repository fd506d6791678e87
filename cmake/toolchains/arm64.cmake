# SPDX-License-Identifier: Apache-2.0
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(triple aarch64-linux-gnu)
include(${CMAKE_CURRENT_LIST_DIR}/debian_cross.cmake)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L /usr/${triple})
