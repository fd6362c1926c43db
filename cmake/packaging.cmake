# Debian packages: `cpack -G DEB` in a build directory whose CMAKE_INSTALL_PREFIX is /usr.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME deimg)
set(CPACK_PACKAGE_VENDOR deimg)
set(CPACK_PACKAGE_CONTACT "deimg developers <developers@deimg.example.org>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL runtime development)
if(TARGET deimg_cli)
  list(APPEND CPACK_COMPONENTS_ALL program)
endif()

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

set(runtime libdeimg${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${runtime})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/debian/triggers)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "The shared library. It turns the raw files of one digital still camera
model into pictures of 8 or 16 bits per sample, line by line, with the same
bytes on every machine.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libdeimg-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${runtime} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "The C header, helpers for C++ hosts, the static library, and the files by
which CMake and pkg-config find them.")

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME deimg)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PROGRAM_DESCRIPTION "The program. It develops the raw files of one digital still camera model
into PNG, TIFF, JPEG or PPM, many at once, makes previews and thumbnails,
prints what the files record, and checks archives for damage.")

# Every package carries its terms and its history.
set(DEIMG_LICENCE "")
if(EXISTS ${PROJECT_SOURCE_DIR}/LICENSE)
  file(READ ${PROJECT_SOURCE_DIR}/LICENSE DEIMG_LICENCE)
endif()
set(debian ${PROJECT_BINARY_DIR}/packaging/debian)
foreach(file copyright changelog)
  configure_file(${PROJECT_SOURCE_DIR}/packaging/debian/${file}.in ${debian}/${file} @ONLY)
endforeach()
execute_process(COMMAND gzip -9nkf changelog WORKING_DIRECTORY ${debian})
foreach(component runtime development program)
  string(TOUPPER ${component} upper)
  install(FILES ${debian}/copyright ${debian}/changelog.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}
    COMPONENT ${component})
endforeach()

include(CPack)
