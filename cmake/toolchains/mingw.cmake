# Windows libraries with the MinGW-w64 compilers of CMAKE_SYSTEM_PROCESSOR. The variant with the
# system's own threads is taken: the library starts none, and no thread library has to come along.
set(CMAKE_SYSTEM_NAME Windows)
set(prefix ${CMAKE_SYSTEM_PROCESSOR}-w64-mingw32)
find_program(CMAKE_C_COMPILER NAMES ${prefix}-gcc-win32 ${prefix}-gcc REQUIRED)
find_program(CMAKE_CXX_COMPILER NAMES ${prefix}-g++-win32 ${prefix}-g++ REQUIRED)
set(CMAKE_FIND_ROOT_PATH /usr/${prefix})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
