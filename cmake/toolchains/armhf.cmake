# SPDX-License-Identifier: Apache-2.0
set(CMAKE_SYSTEM_PROCESSOR arm)
set(triple arm-linux-gnueabihf)
include(${CMAKE_CURRENT_LIST_DIR}/debian_cross.cmake)
# NEON is part of what 32-bit ARM Android promises; Debian's default is not.
set(CMAKE_C_FLAGS_INIT "-march=armv7-a -mfpu=neon -mfloat-abi=hard")
set(CMAKE_CXX_FLAGS_INIT "-march=armv7-a -mfpu=neon -mfloat-abi=hard")
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L /usr/${triple})
