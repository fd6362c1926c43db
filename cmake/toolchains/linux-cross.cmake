# Linux libraries for CMAKE_SYSTEM_PROCESSOR with Debian's cross compilers; their programs run under
# user-mode emulation.
set(CMAKE_SYSTEM_NAME Linux)
set(prefix ${CMAKE_SYSTEM_PROCESSOR}-linux-gnu)
# With their version: the packages of the plain names cannot be beside the 32-bit x86 ones.
set(CMAKE_C_COMPILER ${prefix}-gcc-12)
set(CMAKE_CXX_COMPILER ${prefix}-g++-12)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-${CMAKE_SYSTEM_PROCESSOR}-static -L /usr/${prefix})
set(CMAKE_FIND_ROOT_PATH /usr/${prefix})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
