# What `cmake --install` puts where. Three components: runtime (the shared library), development
# (headers, static library, CMake and pkg-config files) and program (deimg and its desktop files).
include(CMakePackageConfigHelpers)

set(DEIMG_RAW_EXTENSION raw CACHE STRING "File name extension of raw files on the desktop")
set(DEIMG_PACKAGING_DIR ${PROJECT_SOURCE_DIR}/packaging)
set(DEIMG_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/deimg)
set(DEIMG_GENERATED_DIR ${PROJECT_BINARY_DIR}/packaging)

# Libraries and headers.
set_target_properties(deimg_shared PROPERTIES EXPORT_NAME deimg)
set_target_properties(deimg PROPERTIES EXPORT_NAME deimg_static)
install(TARGETS deimg_shared EXPORT deimgTargets
  RUNTIME COMPONENT runtime
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT development)
install(TARGETS deimg EXPORT deimgTargets ARCHIVE COMPONENT development)
install(FILES include/deimg/deimg.h include/deimg/streams.hpp
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/deimg COMPONENT development)

# How other builds find them.
install(EXPORT deimgTargets NAMESPACE deimg:: DESTINATION ${DEIMG_PACKAGE_DIR}
  COMPONENT development)
configure_package_config_file(${DEIMG_PACKAGING_DIR}/deimgConfig.cmake.in
  ${DEIMG_GENERATED_DIR}/deimgConfig.cmake INSTALL_DESTINATION ${DEIMG_PACKAGE_DIR})
write_basic_package_version_file(${DEIMG_GENERATED_DIR}/deimgConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${DEIMG_GENERATED_DIR}/deimgConfig.cmake
  ${DEIMG_GENERATED_DIR}/deimgConfigVersion.cmake
  DESTINATION ${DEIMG_PACKAGE_DIR} COMPONENT development)
file(RELATIVE_PATH DEIMG_PC_PREFIX /p/${CMAKE_INSTALL_LIBDIR}/pkgconfig /p)
configure_file(${DEIMG_PACKAGING_DIR}/deimg.pc.in ${DEIMG_GENERATED_DIR}/deimg.pc @ONLY)
install(FILES ${DEIMG_GENERATED_DIR}/deimg.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# The program, its manual and its place in shells and on the desktop.
if(TARGET deimg_cli)
  install(TARGETS deimg_cli RUNTIME COMPONENT program)

  configure_file(${DEIMG_PACKAGING_DIR}/deimg.1.in ${DEIMG_GENERATED_DIR}/deimg.1 @ONLY)
  find_program(GZIP gzip REQUIRED)
  add_custom_command(OUTPUT ${DEIMG_GENERATED_DIR}/deimg.1.gz
    COMMAND ${GZIP} -9nkf deimg.1
    DEPENDS ${DEIMG_GENERATED_DIR}/deimg.1 WORKING_DIRECTORY ${DEIMG_GENERATED_DIR} VERBATIM)
  add_custom_target(deimg_manual ALL DEPENDS ${DEIMG_GENERATED_DIR}/deimg.1.gz)
  install(FILES ${DEIMG_GENERATED_DIR}/deimg.1.gz
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT program)

  # Where zsh looks depends on who installs: the distribution or the machine's owner.
  set(zsh zsh/site-functions)
  if(EXISTS /etc/debian_version AND CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set(zsh zsh/vendor-completions)
  endif()
  set(completions ${DEIMG_PACKAGING_DIR}/completions)
  install(FILES ${completions}/deimg.bash RENAME deimg
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT program)
  install(FILES ${completions}/_deimg
    DESTINATION ${CMAKE_INSTALL_DATADIR}/${zsh} COMPONENT program)
  install(FILES ${completions}/deimg.fish
    DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT program)

  foreach(file deimg.thumbnailer deimg.xml)
    configure_file(${DEIMG_PACKAGING_DIR}/desktop/${file}.in ${DEIMG_GENERATED_DIR}/${file} @ONLY)
  endforeach()
  install(FILES ${DEIMG_GENERATED_DIR}/deimg.thumbnailer
    DESTINATION ${CMAKE_INSTALL_DATADIR}/thumbnailers COMPONENT program)
  install(FILES ${DEIMG_GENERATED_DIR}/deimg.xml
    DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages COMPONENT program)
endif()
