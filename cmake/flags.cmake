# Flags for every target of the project. The arithmetic ones are part of the product: the same
# bytes have to come out of every build, so signed overflow wraps and doubles are never contracted.
add_compile_options(-fwrapv -ffp-contract=off)
add_compile_options(-Wall -Wextra -Wshadow -Wvla -Werror)
add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wconversion> $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>)
if(NOT DEIMG_SANITIZE)
  # GCC sees conversions in what its own sanitizers put in.
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wsign-conversion>)
endif()
if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND CMAKE_SYSTEM_PROCESSOR MATCHES "86")
  # Doubles are computed in SSE2 registers, never in wider x87 ones.
  add_compile_options(-msse2 -mfpmath=sse)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # Loops over whole lines are vectorised at -O3 only.
  set(CMAKE_CXX_FLAGS_RELEASE "-O3 -DNDEBUG")
endif()
if(DEIMG_SANITIZE)
  add_compile_options(-fsanitize=${DEIMG_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${DEIMG_SANITIZE})
endif()
if(DEIMG_SANITIZE OR CMAKE_BUILD_TYPE STREQUAL "Debug")
  # What stages read and write is held to what they declare.
  add_compile_definitions(DEIMG_CHECK_CONTRACTS)
endif()
